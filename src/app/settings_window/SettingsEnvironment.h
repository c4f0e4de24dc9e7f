#pragma once

#include "OutputCards.h"
#include "UserPaths.h"

#include <functional>
#include <vector>

namespace orv {

class Bindings;
class DefaultsStore;
class DesktopOpener;
class Dialogs;
class EngineCatalogue;
class FileChooser;
class L10n;
class SettingsActions;
class TranslationSettings;
class UpdateControl;
class WhisperModelManager;

/// What the settings window shows and works on. The references outlive it; the functions may be
/// empty and are called on the main thread.
struct SettingsEnvironment {
    TranslationSettings& settings;
    DefaultsStore& store;
    const EngineCatalogue& engines;
    L10n& l10n;
    Dialogs& dialogs;
    FileChooser& chooser;
    DesktopOpener& opener;
    UpdateControl& updates;
    UserPaths paths;
    std::vector<OutputCard> outputCards;     ///< In the order in which they are shown.
    std::function<void()> appearanceChanged; ///< The subtitles shall look otherwise from now on.
    std::function<void()> autoStopChanged;   ///< Whether the backend ends with the program.
};

/// What the tabs of one settings window share. The references outlive the tabs.
struct TabContext {
    const SettingsEnvironment& environment;
    Bindings& bindings;
    SettingsActions& actions;
    WhisperModelManager& models;
};

} // namespace orv
