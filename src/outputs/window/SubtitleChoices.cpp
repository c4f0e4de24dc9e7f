#include "SubtitleChoices.h"

#include "OverlayDefaults.h"
#include "SettingsList.h"

namespace orv {

SubtitleChoices SubtitleChoices::fromSettings(const SettingsList& settings) {
    return {.appearance = SubtitleAppearance::fromSettings(settings),
            .isShown = settings.showOverlay.get(),
            .showOriginal = settings.showOriginal.get(),
            .isSpoken = settings.speakTranslation.get()};
}

void watchSubtitleChoices(const SettingsList& settings, QObject* context,
                          const std::function<void(const SubtitleChoices& choices)>& take) {
    std::vector<const AnySetting*> watched = OverlayDefaults::settings(settings);
    watched.insert(watched.end(),
                   {&settings.showOverlay, &settings.showOriginal, &settings.speakTranslation});
    watchAll(watched, context,
             [&settings, take] { take(SubtitleChoices::fromSettings(settings)); });
}

} // namespace orv
