#include "ScreenPlacement.h"

#include <algorithm>

namespace orv {

QPoint placeBeside(const QRect& button, const QSize& size, const QRect& available, int gap) {
    const int lastX = std::max(available.left(), available.right() + 1 - size.width());
    const int lastY = std::max(available.top(), available.bottom() + 1 - size.height());
    if (button.isEmpty()) {
        return {lastX, available.top()};
    }
    const int below = button.bottom() + 1 + gap;
    const int above = button.top() - gap - size.height();
    const int y = below > lastY ? above : below;
    return {std::clamp(button.left(), available.left(), lastX),
            std::clamp(y, available.top(), lastY)};
}

} // namespace orv
