#include "OverlayDefaults.h"

#include "HexColor.h"
#include "SettingsList.h"

#include <algorithm>

namespace orv {

double OverlayDefaults::opacityValue(const SettingsList& settings) {
    return std::clamp(settings.overlayOpacity.get(), 0.0, 1.0);
}

QColor OverlayDefaults::color(const Setting<QString>& setting) {
    return colorFromHex(setting.get(), colorFromHex(setting.initial(), Qt::black));
}

std::vector<const AnySetting*> OverlayDefaults::settings(const SettingsList& settings) {
    return {&settings.overlayBgColor, &settings.overlayTextColor, &settings.overlayBorderColor,
            &settings.overlayBorderEnabled, &settings.overlayOpacity};
}

} // namespace orv
