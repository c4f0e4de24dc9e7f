#pragma once

#include "OutputCards.h"
#include "ServiceEndpoints.h"
#include "UserPaths.h"

#include <vector>

namespace orv {

class Bindings;
class DesktopOpener;
class Dialogs;
class EngineCatalogue;
class FileChooser;
class L10n;
class NearRecognisers;
class SerialQueue;
class SettingsActions;
class TranslationSettings;
class UpdateControl;
class WhisperModelManager;
class WhisperPackages;

/// What the settings window shows and works on. The references outlive it.
struct SettingsEnvironment {
    SerialQueue& disk; ///< The queue for files.
    TranslationSettings& settings;
    const EngineCatalogue& engines;
    const ServiceEndpoints& endpoints;
    L10n& l10n;
    Dialogs& dialogs;
    FileChooser& chooser;
    DesktopOpener& opener;
    UpdateControl& updates;
    WhisperModelManager& models; ///< Not the window's own: downloads concern the program's end.
    WhisperPackages& packages;   ///< Nor are these: an installation outlives the window.
    NearRecognisers& recognisers;
    UserPaths paths;
    std::vector<OutputCard> outputCards; ///< In the order in which they are shown.
};

/// What the tabs of one settings window share. The references outlive the tabs.
struct TabContext {
    const SettingsEnvironment& environment;
    Bindings& bindings;
    SettingsActions& actions;
    WhisperModelManager& models;
};

} // namespace orv
