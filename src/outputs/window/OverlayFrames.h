#pragma once

#include <QRect>

namespace orv {

/// The fixed lengths of the subtitle window, in logical pixels.
struct OverlayLengths {
    static constexpr int overlayWidth = 800;
    static constexpr int sidePadding = 20;
    static constexpr int verticalPadding = 15;
    static constexpr int lineGap = 6;         ///< Between the source text and the translation.
    static constexpr int bottomDistance = 80; ///< From the bottom of the screen.
    static constexpr int topDistance = 16;    ///< At least, from its top.
    static constexpr int cornerRadius = 16;
    static constexpr int borderWidth = 3;
};

/// Where the window and its two lines are.
struct OverlayFrames {
    QRect window;      ///< On the desktop.
    QRect translation; ///< In the window.
    QRect original;    ///< In the window; empty when it is hidden.

    friend bool operator==(const OverlayFrames&, const OverlayFrames&) = default;
};

/// Width of the window on a screen: 800, or the screen's where that is narrower.
int overlayWidthOn(const QRect& screen);

/// Width of the lines on a screen.
int textWidthOn(const QRect& screen);

/// Frames for lines of these heights (0: no source text) on a screen: centred, the translation at
/// the bottom, the source text above it, growing upwards from 80 above the bottom.
OverlayFrames overlayFrames(int originalHeight, int translationHeight, const QRect& screen);

} // namespace orv
