#pragma once

class QWindow;

namespace orv {

/// Whether the desktop blends translucent windows with what is below them, right now. Main thread.
bool isDesktopComposited();

/// Tells the desktop that the outer `margin` (logical pixels) of a window on the screen is its own
/// shadow, so that it draws none round it. Main thread.
void declareOwnShadow(QWindow& window, int margin);

} // namespace orv
