#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace orv {

/// The name of a window or of what it is about, in the larger text size.
QLabel* makeTitle(QWidget* parent);

/// The name of a card or of a group of controls.
QLabel* makeHeading(QWidget* parent);

/// An explanation, in the quieter colour; breaks its lines.
QLabel* makeHint(QWidget* parent);

/// Text from outside, such as a result: plain, breaks its lines, can be selected and copied with
/// the mouse and the keys.
QLabel* makeText(QWidget* parent);

/// Shows `text` on `label` and makes it the name of `field`, on screen and for assistive programs.
void nameField(QLabel* label, QWidget* field, const QString& text);

} // namespace orv
