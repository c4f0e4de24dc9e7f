#include "OverlayFrames.h"

#include <algorithm>

namespace orv {

int overlayWidthOn(const QRect& screen) {
    return std::min(OverlayLengths::overlayWidth, screen.width());
}

int textWidthOn(const QRect& screen) {
    return std::max(1, overlayWidthOn(screen) - 2 * OverlayLengths::sidePadding);
}

OverlayFrames overlayFrames(int originalHeight, int translationHeight, const QRect& screen) {
    using Lengths = OverlayLengths;
    const int width = overlayWidthOn(screen);
    const int textWidth = textWidthOn(screen);
    const int gap = originalHeight > 0 ? Lengths::lineGap : 0;
    const int height = originalHeight + gap + translationHeight + 2 * Lengths::verticalPadding;

    OverlayFrames frames;
    frames.window = QRect(screen.left() + (screen.width() - width) / 2,
                          screen.bottom() + 1 - Lengths::bottomDistance - height, width, height);
    frames.translation =
        QRect(Lengths::sidePadding, height - Lengths::verticalPadding - translationHeight,
              textWidth, translationHeight);
    if (originalHeight > 0) {
        frames.original =
            QRect(Lengths::sidePadding, Lengths::verticalPadding, textWidth, originalHeight);
    }
    return frames;
}

} // namespace orv
