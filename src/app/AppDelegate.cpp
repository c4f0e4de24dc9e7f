#include "AppDelegate.h"

#include "AlertNotes.h"
#include "DesktopOpener.h"
#include "Dialogs.h"
#include "Log.h"
#include "OverlayServer.h"
#include "Quit.h"
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
    updateMenuBarIcon(false, false);
    environment_.tray.setListener(this);
    environment_.overlayServer.applySettings(OverlayServing::fromSettings(environment_.settings));
    observeUpdates();
    askForNotifications();
    if (!environment_.tray.isAvailable()) {
        environment_.panel.showAsWindow();
    }
    if (environment_.settings.autoStartBackend.get()) {
        logLine(u"Auto-Start Backend aktiviert");
        QTimer::singleShot(environment_.timings.autoStart, this, [this] {
            if (!environment_.quit.isUnderWay()) {
                environment_.backend.startBackend();
            }
        });
    } else {
        logLine(u"App gestartet - Backend muss manuell gestartet werden");
    }
}

void AppDelegate::observeUpdates() {
    connect(&environment_.updates, &UpdateChecker::updateAvailableChanged, this,
            [this](bool updateAvailable) {
                const UpdateChecker& updates = environment_.updates;
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
    if (click == TrayClick::Secondary) {
        showContextMenu();
    } else {
        togglePopover();
    }
}

void AppDelegate::togglePopover() {
    if (environment_.panel.isShown()) {
        environment_.panel.close();
    } else {
        environment_.panel.showBeside(environment_.tray.geometry());
    }
}

void AppDelegate::showContextMenu() {
    environment_.tray.showMenu(contextMenu());
}

QList<TrayMenuItem> AppDelegate::contextMenu() {
    const QString state =
        environment_.backend.isRunning() ? u"menu.backend.running"_s : u"menu.backend.stopped"_s;
    const TrayMenuItem separator;
    QList<TrayMenuItem> menu = {{.text = environment_.text(u"app.name.short"_s)},
                                separator,
                                {.text = environment_.text(state)}};
    if (environment_.updates.updateAvailable()) {
        menu.append(separator);
        menu.append({.text = u"Update: v"_s + environment_.updates.latestVersion(),
                     .action = [this] { openUpdateDownload(); }});
    }
    menu.append(separator);
    menu.append({.text = environment_.text(u"menu.quit"_s),
                 .action = [this] { quitApp(); },
                 .shortcut = u"q"_s});
    return menu;
}

bool AppDelegate::showPanel() {
    if (environment_.quit.isUnderWay()) {
        return false;
    }
    if (!environment_.tray.isAvailable()) {
        environment_.panel.showAsWindow();
        return true;
    }
    if (!environment_.panel.isShown()) {
        // A popover that has just closed takes the next request for the click that closed it.
        environment_.panel.close();
    }
    environment_.panel.showBeside(environment_.tray.geometry());
    return true;
}

void AppDelegate::showSettingsWindow() {
    settingsWindow_.show();
}

void AppDelegate::showUpdateAlert(const QString& version, const QString& notes,
                                  const QString& downloadURL) {
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
    environment_.updates.openDownload();
}

void AppDelegate::updateMenuBarIcon(bool isRunning, bool isTranslating) {
    if (isTranslating) {
        environment_.tray.setIcon(TrayIcon::Translating, u"Translating"_s);
    } else if (isRunning) {
        environment_.tray.setIcon(TrayIcon::BackendRunning, u"Backend Running"_s);
    } else {
        environment_.tray.setIcon(TrayIcon::Idle, u"Orvane"_s);
    }
    logLine(QString(u"🎨 Icon aktualisiert: running=" % boolText(isRunning) % u", translating=" %
                    boolText(isTranslating)));
}

void AppDelegate::backendStatusChanged(bool isRunning) {
    logLine(QString(u"📢 Backend Status Changed: " % boolText(isRunning)));
    currentIconState_.backendRunning = isRunning;
    updateMenuBarIcon(currentIconState_.backendRunning, currentIconState_.translating);
}

void AppDelegate::translationStatusChanged(bool isTranslating) {
    logLine(QString(u"📢 Translation Status Changed: " % boolText(isTranslating)));
    currentIconState_.translating = isTranslating;
    updateMenuBarIcon(currentIconState_.backendRunning, currentIconState_.translating);
}

void AppDelegate::trayAvailabilityChanged(bool available) {
    if (environment_.trayChanged) {
        environment_.trayChanged(available);
    }
    // A panel that is open as a window when the tray comes stays; one that is hidden when the tray
    // goes would be out of reach.
    if (!available) {
        environment_.panel.showAsWindow();
    }
}

void AppDelegate::quitApp() {
    environment_.quit.fromMenu();
}

void AppDelegate::applicationWillTerminate() {
    environment_.overlayServer.stop();
    if (environment_.settings.autoStopBackend.get()) {
        logLine(u"App wird beendet - stoppe Backend (autoStopBackend=true)...");
        environment_.backend.stopBackend();
    } else {
        logLine(u"App wird beendet - Backend läuft weiter (autoStopBackend=false)");
        environment_.backend.leaveRunning();
    }
}

} // namespace orv
