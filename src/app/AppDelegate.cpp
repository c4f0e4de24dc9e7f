#include "AppDelegate.h"

#include "AlertNotes.h"
#include "DesktopOpener.h"
#include "Dialogs.h"
#include "Log.h"
#include "OverlayServer.h"
#include "Quit.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"
#include "UpdateChecker.h"
#include "UserNotifications.h"

#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

AppDelegate::AppDelegate(DelegateEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , settingsWindow_(environment_.makeSettings) {}

void AppDelegate::applicationDidFinishLaunching() {
    ORV_ON_MAIN();
    updateMenuBarIcon(false, false);
    environment_.statusItem.setListener(this);
    environment_.overlayServer.applySettings(OverlayServing::fromSettings(environment_.settings));
    observeUpdates();
    askForNotifications();
    if (!environment_.statusItem.isAvailable()) {
        environment_.panel.showAsWindow();
    }
    if (environment_.settings.autoStartBackend.get()) {
        logLine(u"Auto-Start Backend aktiviert");
        QTimer::singleShot(environment_.timings.autoStart, this, [this] {
            if (!environment_.quit.isUnderWay()) {
                environment_.translationEngine.startBackend();
            }
        });
    } else {
        logLine(u"App gestartet - Backend muss manuell gestartet werden");
    }
}

void AppDelegate::observeUpdates() {
    connect(&environment_.updateChecker, &UpdateChecker::updateAvailableChanged, this,
            [this](bool updateAvailable) {
                const UpdateChecker& updates = environment_.updateChecker;
                if (updateAvailable && !updates.latestVersion().isEmpty()) {
                    showUpdateAlert(updates.latestVersion(), updates.releaseNotes(),
                                    updates.downloadURL());
                }
            });
}

void AppDelegate::askForNotifications() {
    environment_.userNotifications.requestAuthorization(
        NotificationOption::Alert | NotificationOption::Badge | NotificationOption::Sound,
        [](const NotificationAuthorization& answer) {
            if (answer.granted) {
                logLine(u"✓ Benachrichtigungs-Berechtigung erteilt");
            } else {
                logLine(u"⚠️  Benachrichtigungs-Berechtigung: "_s +
                        (answer.error.isEmpty() ? boolText(false) : answer.error));
            }
        });
}

void AppDelegate::trayClicked(TrayClick click) {
    statusBarButtonClicked(click);
}

void AppDelegate::statusBarButtonClicked(TrayClick click) {
    ORV_ON_MAIN();
    if (click == TrayClick::Secondary) {
        showContextMenu();
    } else {
        togglePopover();
    }
}

void AppDelegate::togglePopover() {
    ORV_ON_MAIN();
    if (environment_.panel.isShown()) {
        environment_.panel.close();
    } else {
        environment_.panel.showBeside(environment_.statusItem.geometry());
    }
}

void AppDelegate::showContextMenu() {
    ORV_ON_MAIN();
    environment_.statusItem.showMenu(contextMenu());
}

QList<TrayMenuItem> AppDelegate::contextMenu() {
    const QString state = environment_.translationEngine.isRunning() ? u"menu.backend.running"_s
                                                                     : u"menu.backend.stopped"_s;
    const TrayMenuItem separator;
    QList<TrayMenuItem> menu = {{.text = environment_.text(u"app.name.short"_s)},
                                separator,
                                {.text = environment_.text(state)}};
    if (environment_.updateChecker.updateAvailable()) {
        menu.append(separator);
        menu.append({.text = u"Update: v"_s + environment_.updateChecker.latestVersion(),
                     .action = [this] { openUpdateDownload(); }});
    }
    menu.append(separator);
    menu.append({.text = environment_.text(u"menu.quit"_s),
                 .action = [this] { quitApp(); },
                 .shortcut = u"q"_s});
    return menu;
}

bool AppDelegate::showPanel() {
    ORV_ON_MAIN();
    if (environment_.quit.isUnderWay()) {
        return false;
    }
    if (!environment_.statusItem.isAvailable()) {
        environment_.panel.showAsWindow();
        return true;
    }
    if (!environment_.panel.isShown()) {
        // A popover that has just closed takes the next request for the click that closed it.
        environment_.panel.close();
    }
    environment_.panel.showBeside(environment_.statusItem.geometry());
    return true;
}

void AppDelegate::showSettingsWindow() {
    ORV_ON_MAIN();
    settingsWindow_.show();
}

void AppDelegate::showUpdateAlert(const QString& version, const QString& notes,
                                  const QString& downloadURL) {
    ORV_ON_MAIN();
    const auto& text = environment_.text;
    const QString shownNotes = alertNotes(notes);
    environment_.dialogs.showAlert(
        {.style = AlertStyle::Informational,
         .title = u"ORV Update v"_s + version,
         .message = shownNotes.isEmpty() ? text(u"info.update.available"_s) : shownNotes,
         .buttons = {text(u"info.update.download"_s), text(u"info.update.later"_s)},
         .icon = AlertIcon::Update},
        [this, downloadURL](int chosen) {
            if (chosen == 0) {
                environment_.opener.openAddress(downloadURL);
            }
        });
}

void AppDelegate::openUpdateDownload() {
    ORV_ON_MAIN();
    environment_.updateChecker.openDownload();
}

void AppDelegate::updateMenuBarIcon(bool isRunning, bool isTranslating) {
    ORV_ON_MAIN();
    if (!currentIconState_.interruption.isEmpty()) {
        environment_.statusItem.setIcon(TrayIcon::Interrupted, currentIconState_.interruption);
    } else if (isTranslating) {
        environment_.statusItem.setIcon(TrayIcon::Translating, u"Translating"_s);
    } else if (isRunning) {
        environment_.statusItem.setIcon(TrayIcon::BackendRunning, u"Backend Running"_s);
    } else {
        environment_.statusItem.setIcon(TrayIcon::Idle, u"Orvane"_s);
    }
    logLine(QString(u"🎨 Icon aktualisiert: running=" % boolText(isRunning) % u", translating=" %
                    boolText(isTranslating)));
}

void AppDelegate::backendStatusChanged(bool isRunning) {
    ORV_ON_MAIN();
    logLine(QString(u"📢 Backend Status Changed: " % boolText(isRunning)));
    currentIconState_.backendRunning = isRunning;
    updateMenuBarIcon(currentIconState_.backendRunning, currentIconState_.translating);
}

void AppDelegate::translationStatusChanged(bool isTranslating) {
    ORV_ON_MAIN();
    logLine(QString(u"📢 Translation Status Changed: " % boolText(isTranslating)));
    currentIconState_.translating = isTranslating;
    updateMenuBarIcon(currentIconState_.backendRunning, currentIconState_.translating);
}

void AppDelegate::showInterruption(const QString& what) {
    ORV_ON_MAIN();
    if (what != currentIconState_.interruption) {
        currentIconState_.interruption = what;
        updateMenuBarIcon(currentIconState_.backendRunning, currentIconState_.translating);
    }
}

void AppDelegate::trayAvailabilityChanged(bool available) {
    ORV_ON_MAIN();
    Q_EMIT trayCameOrWent(available);
    // A panel that is open as a window when the tray comes stays; one that is hidden when the tray
    // goes would be out of reach.
    if (!available) {
        environment_.panel.showAsWindow();
    }
}

void AppDelegate::quitApp() {
    ORV_ON_MAIN();
    environment_.quit.fromMenu();
}

void AppDelegate::applicationWillTerminate() {
    ORV_ON_MAIN();
    environment_.overlayServer.stop();
    if (environment_.settings.autoStopBackend.get()) {
        logLine(u"App wird beendet - stoppe Backend (autoStopBackend=true)...");
        environment_.translationEngine.stopBackend();
    } else {
        logLine(u"App wird beendet - Backend läuft weiter (autoStopBackend=false)");
        environment_.translationEngine.leaveRunning();
    }
}

} // namespace orv
