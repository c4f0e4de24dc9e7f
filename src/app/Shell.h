#pragma once

#include "AppDelegate.h"
#include "DefaultsStore.h"
#include "DesktopServices.h"
#include "FileDialogs.h"
#include "FileJobs.h"
#include "LazyPanel.h"
#include "MessageDialogs.h"
#include "OpenOrShow.h"
#include "PanelWindow.h"
#include "ProgramParts.h"
#include "ResultHub.h"
#include "SerialQueue.h"
#include "UserPaths.h"

#include <functional>
#include <memory>
#include <vector>

namespace orv {

class AudioCapture;
class AudioManager;
class BackendLog;
class ControlPanel;
class L10n;
class NearRecognisers;
class OverlayServer;
class OverlayWindow;
class PortProbe;
class Quit;
class RunRecovery;
class SpeechSynthesizer;
class ToolkitTexts;
class TranslationController;
class TranslationEngine;
class TranslationSettings;
class UpdateChecker;
class UserNotifications;
class VRChatOutput;
class VmixTracking;
class WhisperModelManager;
class WhisperPackages;

/// The composition root: makes every long-lived object in order, hands each what it needs, and
/// destroys them in reverse.
class Shell {
  public:
    /// `terminate` asks the program to end. Whoever ran the event loop then calls `finish` and
    /// destroys the shell.
    Shell(const UserPaths& paths, ProgramParts parts, std::function<void()> terminate);
    ~Shell();

    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// The launch sequence.
    void launch();

    /// Shows the panel; false when the program is about to end.
    bool showPanel();

    /// The last act before the objects go.
    void finish();

  private:
    void createSettings();
    void createOutputs();
    void createServices(const UserPaths& paths);
    void createInterface();
    std::unique_ptr<PanelWindow> makePanel();
    std::unique_ptr<QWidget> makeSettings();
    /// In the order in which they take each result. An output that nobody else talks to is made
    /// here and belongs to the hub.
    void addOutputs();
    void connectObjects();
    void connectSubtitles();
    void connectInterruptions();
    bool somethingRuns() const;
    QString text(const QString& key) const;

    const UserPaths paths_;
    const ProgramParts parts_;
    std::function<void()> terminate_;
    SerialQueue disk_{QStringLiteral("io.tavrin.orv.disk")};
    DefaultsStore store_;
    std::unique_ptr<OverlayServer> overlayServer_;
    std::unique_ptr<TranslationSettings> settings_;
    std::unique_ptr<L10n> l10n_;
    std::unique_ptr<ToolkitTexts> toolkitTexts_;
    std::unique_ptr<VRChatOutput> vrchat_;
    std::unique_ptr<VmixTracking> vmixTracking_;
    ResultHub results_;
    std::unique_ptr<AudioCapture> capture_;
    std::unique_ptr<PortProbe> portProbe_;
    MessageDialogs dialogs_;
    std::unique_ptr<BackendLog> backendLog_;
    std::unique_ptr<TranslationEngine> engine_;
    std::unique_ptr<Quit> quit_;
    std::unique_ptr<SpeechSynthesizer> speech_;
    std::unique_ptr<OverlayWindow> overlayWindow_;
    std::unique_ptr<AudioManager> audio_;
    std::unique_ptr<TranslationController> controller_;
    std::unique_ptr<RunRecovery> recovery_;
    FileJobs modelFiles_{disk_};
    std::unique_ptr<WhisperPackages> packages_;
    std::unique_ptr<NearRecognisers> recognisers_;
    std::unique_ptr<WhisperModelManager> models_;
    DesktopServices desktop_;
    OpenOrShow opener_{desktop_, dialogs_, [this](const QString& key) { return text(key); }};
    std::unique_ptr<UserNotifications> userNotifications_;
    std::unique_ptr<UpdateChecker> updates_;
    FileDialogs chooser_;
    std::unique_ptr<Tray> tray_;
    ControlPanel* panel_ = nullptr; ///< Belongs to the window.
    LazyPanel<PanelWindow> window_{[this] { return makePanel(); }};
    std::unique_ptr<AppDelegate> delegate_;
};

} // namespace orv
