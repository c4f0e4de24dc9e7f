#include "SubtitleAppearance.h"

#include "OverlayDefaults.h"

namespace orv {

namespace {

constexpr float originalOpacity = 0.7F;

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

SubtitleAppearance SubtitleAppearance::fromStore(const DefaultsStore& store) {
    SubtitleAppearance appearance;
    appearance.background =
        withOpacity(OverlayDefaults::backgroundColor(store), OverlayDefaults::opacityValue(store));
    if (OverlayDefaults::borderOn(store)) {
        appearance.border = OverlayDefaults::borderColor(store);
    }
    appearance.translation = OverlayDefaults::textColor(store);
    appearance.original = withOpacity(appearance.translation, originalOpacity);
    return appearance;
}

} // namespace orv
