#include "SubtitleAppearance.h"

#include "OverlayDefaults.h"
#include "SettingsList.h"

namespace orv {

namespace {

constexpr float originalOpacity = 0.7F;

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

SubtitleAppearance SubtitleAppearance::fromSettings(const SettingsList& settings) {
    SubtitleAppearance appearance;
    appearance.background = withOpacity(OverlayDefaults::color(settings.overlayBgColor),
                                        OverlayDefaults::opacityValue(settings));
    if (settings.overlayBorderEnabled.get()) {
        appearance.border = OverlayDefaults::color(settings.overlayBorderColor);
    }
    appearance.translation = OverlayDefaults::color(settings.overlayTextColor);
    appearance.original = withOpacity(appearance.translation, originalOpacity);
    return appearance;
}

} // namespace orv
