#pragma once

#include "BackendControl.h"
#include "KeptWindow.h"
#include "Panel.h"
#include "Tray.h"

#include <QList>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace orv {

class DesktopOpener;
class Dialogs;
class NotificationCentre;
class TranslationSettings;
class UpdateChecker;
class UserNotifications;

/// The fixed times of the application's life.
struct DelegateTimings {
    std::chrono::milliseconds autoStart{500};       ///< From the launch to starting the backend.
    std::chrono::milliseconds quitSecondStop{1500}; ///< From Quit to the second look.
    std::chrono::milliseconds quitTerminate{500};   ///< From the second look to the end.
};

/// What the delegate is given. The references outlive it.
struct DelegateEnvironment {
    const TranslationSettings& settings;
    NotificationCentre& notifications;
    Tray& tray;
    Panel& panel;
    BackendControl& backend;
    UpdateChecker& updates;
    UserNotifications& userNotifications;
    Dialogs& dialogs;
    DesktopOpener& opener;
    std::function<QString(const QString& key)> text; ///< A localised text.
    std::function<void()> applyOverlaySettings;      ///< Of the browser overlay server.
    std::function<void()> stopOverlayServer;
    /// Shows a result in the subtitle window.
    std::function<void(const QString& original, const QString& translation)> showSubtitles;
    /// Hands a result to the browser overlay server.
    std::function<void(const QString& original, const QString& translation)> broadcast;
    /// Hands a result to the VRChat output.
    std::function<void(const QString& original, const QString& translation)> sendToVRChat;
    std::function<void()> terminate; ///< Asks the program to end.
    /// Makes the content of the settings window.
    std::function<std::unique_ptr<QWidget>()> makeSettings;
    /// The tray has come or gone, and the panel is about to be shown accordingly.
    std::function<void(bool available)> trayChanged = {};
    /// True once the panel's Quit is under way.
    std::function<bool()> panelQuits = [] { return false; };
    DelegateTimings timings = {};
};

/// The life of the application: launch, the item in the tray with its panel and menu, the road of
/// a result to the outputs, quitting and termination. Lives on the main thread.
class AppDelegate : public QObject {
    Q_OBJECT

  public:
    explicit AppDelegate(DelegateEnvironment environment, QObject* parent = nullptr);

    /// The launch, once everything is made and the default values are registered.
    void applicationDidFinishLaunching();

    /// A click on the item: the secondary one shows the menu, any other toggles the panel.
    void statusBarButtonClicked(TrayClick click);
    void togglePopover();
    void showContextMenu();
    void updateMenuBarIcon(bool isRunning, bool isTranslating);

    /// Shows the panel wherever it belongs; false when the program is about to end. This is how
    /// another start of the program makes itself known.
    bool showPanel();

    /// Brings the settings window to the front. It is made on first use and kept.
    void showSettingsWindow();

    /// Offers a release to the user. Nothing is opened unless the user says so.
    void showUpdateAlert(const QString& version, const QString& notes, const QString& downloadURL);

    /// Opens the found release's address in the browser.
    void openUpdateDownload();

    /// The menu's Quit: always stops the backend. Asking again changes nothing.
    void quitApp();

    /// The last act of every way of ending; the backend stays when the user wants it to.
    void applicationWillTerminate();

  private:
    /// By the menu or by the panel.
    bool isQuitting() const { return quitting_ || environment_.panelQuits(); }

    /// The menu as it stands now, top to bottom.
    QList<TrayMenuItem> contextMenu();
    void observeNotifications();
    void showTranslation(const QString& original, const QString& translation);
    void observeUpdates();
    void askForNotifications();
    void setBackendRunning(bool isRunning);
    void setTranslating(bool isTranslating);
    void trayAvailabilityChanged(bool available);

    struct IconState {
        bool backendRunning = false;
        bool translating = false;
    };

    DelegateEnvironment environment_;
    KeptWindow settingsWindow_;
    IconState currentIconState_;
    bool quitting_ = false;
};

} // namespace orv
