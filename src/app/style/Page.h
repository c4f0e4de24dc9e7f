#pragma once

class QScrollArea;
class QWidget;

namespace orv {

/// A page that scrolls up and down when `content` is higher than its place; without a frame, on the
/// window's ground.
QScrollArea* makePage(QWidget* content, QWidget* parent);

} // namespace orv
