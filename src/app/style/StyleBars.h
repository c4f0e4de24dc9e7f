#pragma once

#include "Theme.h"

class QPainter;
class QRect;
class QStyleOptionProgressBar;
class QStyleOptionSlider;
class QStyleOptionTab;

namespace orv {

// Sliders, scroll bars, progress bars and tabs.

/// Width of scroll bars, logical pixels.
inline constexpr int scrollBarWidth = 10;

/// Diameter of a slider's knob, logical pixels.
inline constexpr int knobSide = 16;

void drawSlider(const Theme& theme, const QStyleOptionSlider& option, const QRect& handle,
                QPainter* painter);

/// The place of a scroll bar's handle; there are no arrow buttons.
QRect scrollBarHandle(const QStyleOptionSlider& option);
void drawScrollBar(const Theme& theme, const QStyleOptionSlider& option, QPainter* painter);

/// `phase`, 0..1, is where a bar without a known end shows its moving part.
void drawProgressBar(const Theme& theme, const QStyleOptionProgressBar& option, qreal phase,
                     QPainter* painter);

void drawTab(const Theme& theme, const QStyleOptionTab& option, QPainter* painter);
void drawTabLabel(const Theme& theme, const QStyleOptionTab& option, QPainter* painter);

} // namespace orv
