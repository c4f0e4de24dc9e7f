#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace orv {

/// Top left corner of something of `size` that belongs to a button of the tray: at the button's
/// left edge, `gap` below it, or above it where the tray is at the bottom of the screen; moved so
/// that all of it lies within `available`. Without a button: the upper right corner of `available`.
QPoint placeBeside(const QRect& button, const QSize& size, const QRect& available, int gap);

} // namespace orv
