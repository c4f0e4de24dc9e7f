#pragma once

#include "BackendControl.h"
#include "KeptWindow.h"
#include "Panel.h"
#include "TextLookup.h"
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
class OverlayServer;
class Quit;
class TranslationSettings;
class UpdateChecker;
class UserNotifications;

/// The fixed times of the application's life.
struct DelegateTimings {
    std::chrono::milliseconds autoStart{500}; ///< From the launch to starting the backend.
};

/// What the delegate is given. The references outlive it.
struct DelegateEnvironment {
    const TranslationSettings& settings;
    Tray& statusItem;
    Panel& panel;
    BackendControl& translationEngine;
    Quit& quit;
    UpdateChecker& updateChecker;
    OverlayServer& overlayServer;
    UserNotifications& userNotifications;
    Dialogs& dialogs;
    DesktopOpener& opener;
    TextLookup text;
    /// Makes the content of the settings window.
    std::function<std::unique_ptr<QWidget>()> makeSettings;
    DelegateTimings timings = {};
};

/// The application delegate: runs the launch and the end of the program, and between them the item
/// in the tray with its panel and menu. Lives on the main thread.
class AppDelegate : public QObject, private Tray::Listener {
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

    // Each changes its own half of what the item shows.
    void backendStatusChanged(bool isRunning);
    void translationStatusChanged(bool isTranslating);

    /// What keeps a run from going on, in the interface's language; empty when nothing does.
    void showInterruption(const QString& what);

    /// Shows the panel wherever it belongs; false when the program is about to end. This is how
    /// another start of the program makes itself known.
    bool showPanel();

    /// Brings the settings window to the front. It is made on first use and kept.
    void showSettingsWindow();

    /// Offers a release to the user. Nothing is opened unless the user says so.
    void showUpdateAlert(const QString& version, const QString& notes, const QString& downloadURL);

    /// Opens the found release's address in the browser.
    void openUpdateDownload();

    /// The menu's Quit.
    void quitApp();

    /// The last act of every way of ending: stops the overlay server, and the backend, too, unless
    /// the user has switched `autoStopBackend` off.
    void applicationWillTerminate();

  Q_SIGNALS:
    /// The tray has come or gone, and the panel is about to be shown accordingly.
    void trayCameOrWent(bool available);

  private:
    /// The menu as it stands now, top to bottom.
    QList<TrayMenuItem> contextMenu();
    void observeUpdates();
    void askForNotifications();
    void trayClicked(TrayClick click) override;
    void trayAvailabilityChanged(bool available) override;

    struct IconState {
        bool backendRunning = false;
        bool translating = false;
        QString interruption; ///< Shown instead of the two, unless empty.
    };

    DelegateEnvironment environment_;
    KeptWindow settingsWindow_;
    IconState currentIconState_;
};

} // namespace orv
