#pragma once

#include "TextLookup.h"

#include <QString>

#include <memory>

namespace orv {

class DesktopOpener;
class Dialogs;
class FileChooser;
class FileJobs;
class TranslationSettings;

/// What the actions are given. The references outlive them.
struct ActionsEnvironment {
    TranslationSettings& settings;
    FileJobs& files;
    Dialogs& dialogs;
    FileChooser& chooser;
    DesktopOpener& opener;
    TextLookup text;
    QString supportFolder; ///< Where backend and log file are.
    QString outputFolder;  ///< Where the transcripts are.
    QString backendLog;    ///< The backend's log file.
    QString earlierLog;    ///< The one before.
};

/// The operations on files behind the settings window's buttons. Everything that touches the disk
/// happens in the background; what goes wrong is shown in an alert. Main thread only.
class SettingsActions {
  public:
    explicit SettingsActions(ActionsEnvironment environment);
    ~SettingsActions();
    SettingsActions(const SettingsActions&) = delete;
    SettingsActions& operator=(const SettingsActions&) = delete;

    /// Lets the user choose the service account's JSON file; its path becomes the setting.
    void pickServiceAccountJSON();
    void clearServiceAccount();

    /// Shows the folder of the program's files, or of the transcripts, in the file browser; a
    /// folder that is not there yet is made first.
    void openSupportDirectory();
    void openOutputDirectory();

    /// Asks, deletes the backend's log files and says so. Without one there is nothing to delete,
    /// and that is said, too. Whoever writes them does so on the same queue, and begins a new one
    /// with what comes later.
    void clearCache();

  private:
    void openFolder(const QString& path);
    void deleteLogs();
    void showProblem(const QString& message) const;

    /// For answers that arrive after the object's end.
    using Alive = std::shared_ptr<const bool>;

    const ActionsEnvironment environment_;
    const Alive alive_ = std::make_shared<const bool>(true);
};

} // namespace orv
