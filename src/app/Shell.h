#pragma once

#include "AppDelegate.h"
#include "BackendControl.h"
#include "CaptureControl.h"
#include "DefaultsStore.h"
#include "MessageDialogs.h"
#include "NotificationCentre.h"
#include "ServiceAddresses.h"
#include "UserPaths.h"

#include <functional>
#include <memory>

namespace orv {

class AudioCapture;
class AudioManager;
class ControlPanel;
class L10n;
class OverlayServer;
class OverlayWindow;
class PanelWindow;
class PortProbe;
class SpeechSynthesizer;
class TranslationController;
class TranslationEngine;
class TranslationSettings;

/// The composition root: makes every long-lived object in order, hands each what it needs, and
/// destroys them in reverse.
class Shell {
  public:
    /// `terminate` asks the program to end. Whoever ran the event loop then calls `finish` and
    /// destroys the shell.
    Shell(const UserPaths& paths, ServiceAddresses addresses, std::function<void()> terminate);
    ~Shell();

    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// The launch sequence.
    void launch();

    /// The last act before the objects go.
    void finish();

  private:
    void createSettings();
    void createServices(const UserPaths& paths);
    void createSubtitles();
    void createInterface();
    void connectObjects();
    bool somethingRuns() const;
    QString text(const QString& key) const;

    ServiceAddresses addresses_;
    std::function<void()> terminate_;
    NotificationCentre notifications_;
    DefaultsStore store_;
    std::unique_ptr<L10n> l10n_;
    std::unique_ptr<OverlayServer> overlayServer_;
    std::unique_ptr<TranslationSettings> settings_;
    std::unique_ptr<AudioCapture> capture_;
    std::unique_ptr<PortProbe> portProbe_;
    MessageDialogs dialogs_;
    std::unique_ptr<TranslationEngine> engine_;
    std::unique_ptr<BackendControl> backendControl_;
    std::unique_ptr<SpeechSynthesizer> speech_;
    std::unique_ptr<OverlayWindow> overlayWindow_;
    std::unique_ptr<AudioManager> audio_;
    std::unique_ptr<CaptureControl> captureControl_;
    std::unique_ptr<TranslationController> controller_;
    std::unique_ptr<Tray> tray_;
    ControlPanel* panel_ = nullptr; ///< Belongs to `window_`.
    std::unique_ptr<PanelWindow> window_;
    std::unique_ptr<AppDelegate> delegate_;
};

} // namespace orv
