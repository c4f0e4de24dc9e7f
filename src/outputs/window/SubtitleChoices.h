#pragma once

#include "SubtitleAppearance.h"

#include <QObject>

#include <functional>

namespace orv {

class SettingsList;

/// What the user wants of the subtitle window.
struct SubtitleChoices {
    SubtitleAppearance appearance;
    bool isShown = true;       ///< Whether there are subtitles at all.
    bool showOriginal = false; ///< Whether the source text stands above the translation.
    bool isSpoken = false;     ///< Whether translations are read aloud.

    /// The user's choices as they are now.
    static SubtitleChoices fromSettings(const SettingsList& settings);
};

/// Calls `take` with the choices after each assignment of a setting that they are made from, as
/// long as `context` lives.
void watchSubtitleChoices(const SettingsList& settings, QObject* context,
                          const std::function<void(const SubtitleChoices& choices)>& take);

} // namespace orv
