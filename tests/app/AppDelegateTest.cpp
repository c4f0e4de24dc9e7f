#include "DelegateFixture.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class AppDelegateTest : public DelegateFixture {};

TEST_F(AppDelegateTest, startsWithTheIdleIconAndAppliesTheOverlayServersSettings) {
    enableOverlayServer();
    launch();
    EXPECT_EQ(tray.icon, TrayIcon::Idle);
    EXPECT_EQ(tray.description, u"Orvane"_s);
    EXPECT_TRUE(log.contains(u"🎨 Icon aktualisiert: running=false, translating=false"_s));
    EXPECT_TRUE(waitUntil([this] { return overlayServer.isRunning(); }));
    EXPECT_TRUE(panel.calls.isEmpty()) << "the panel waits for a click";
}

TEST_F(AppDelegateTest, showsThePanelAsAWindowWhereThereIsNoTray) {
    tray.available = false;
    launch();
    EXPECT_EQ(panel.calls, QStringList{u"showAsWindow"_s});
}

TEST_F(AppDelegateTest, bringsThePanelBackWhenTheTrayGoes) {
    launch();
    tray.availabilityChanged(false);
    EXPECT_EQ(panel.calls, (QStringList{u"tray went"_s, u"showAsWindow"_s}));
}

TEST_F(AppDelegateTest, leavesAnOpenWindowAloneWhenATrayComes) {
    tray.available = false;
    launch();
    tray.availabilityChanged(true);
    EXPECT_TRUE(panel.shown);
    EXPECT_EQ(panel.calls, (QStringList{u"showAsWindow"_s, u"tray came"_s}));
}

TEST_F(AppDelegateTest, doesNotStartTheBackendUnlessAsked) {
    launch();
    EXPECT_TRUE(log.contains(u"App gestartet - Backend muss manuell gestartet werden"_s));
    drainEvents();
    EXPECT_TRUE(backend.calls.isEmpty());
}

TEST_F(AppDelegateTest, startsTheBackendALittleLaterWhenAsked) {
    settings.autoStartBackend.set(true);
    launch();
    EXPECT_TRUE(log.contains(u"Auto-Start Backend aktiviert"_s));
    EXPECT_TRUE(backend.calls.isEmpty());
    EXPECT_TRUE(waitUntil([this] { return backend.calls == QStringList{u"startBackend"_s}; }));
}

TEST_F(AppDelegateTest, theRealTimesAreThoseOfTheProgram) {
    EXPECT_EQ(DelegateTimings().autoStart, 500ms);
    const QuitTimings timings;
    EXPECT_EQ(timings.secondStop, 1500ms);
    EXPECT_EQ(timings.secondStop + timings.terminate, 2s);
}

TEST_F(AppDelegateTest, aPrimaryClickTogglesThePanelAndNeverShowsTheMenu) {
    launch();
    tray.click(TrayClick::Primary);
    EXPECT_EQ(panel.calls, QStringList{u"showBeside 700,0"_s});
    tray.click(TrayClick::Primary);
    EXPECT_EQ(panel.calls.last(), u"close"_s);
    EXPECT_FALSE(panel.shown);
    EXPECT_TRUE(tray.menus.isEmpty());
}

TEST_F(AppDelegateTest, aSecondaryClickShowsTheMenuAlsoWhileThePanelIsOpen) {
    launch();
    tray.click(TrayClick::Primary);
    tray.click(TrayClick::Secondary);
    EXPECT_EQ(tray.menus.size(), 1);
    EXPECT_TRUE(panel.shown);
}

TEST_F(AppDelegateTest, theMenuHoldsNameBackendStateAndQuitInOrder) {
    launch();
    tray.click(TrayClick::Secondary);
    const QList<TrayMenuItem> menu = tray.menus.value(0);
    ASSERT_EQ(menu.size(), 5);
    EXPECT_EQ(menu[0].text, u"<app.name.short>"_s);
    EXPECT_FALSE(menu[0].action);
    EXPECT_TRUE(menu[1].text.isEmpty());
    EXPECT_EQ(menu[2].text, u"<menu.backend.stopped>"_s);
    EXPECT_FALSE(menu[2].action);
    EXPECT_TRUE(menu[3].text.isEmpty());
    EXPECT_EQ(menu[4].text, u"<menu.quit>"_s);
    EXPECT_EQ(menu[4].shortcut, u"q"_s);
    EXPECT_TRUE(menu[4].action);
}

TEST_F(AppDelegateTest, theMenuIsBuiltAfreshOnEveryClick) {
    launch();
    tray.click(TrayClick::Secondary);
    backend.running = true;
    tray.click(TrayClick::Secondary);
    ASSERT_EQ(tray.menus.size(), 2);
    EXPECT_EQ(tray.menus[1].value(2).text, u"<menu.backend.running>"_s);
}

TEST_F(AppDelegateTest, theBackendsStatusChangesItsHalfOfTheIcon) {
    launch();
    delegate->backendStatusChanged(true);
    EXPECT_TRUE(log.contains(u"📢 Backend Status Changed: true"_s));
    EXPECT_TRUE(log.contains(u"🎨 Icon aktualisiert: running=true, translating=false"_s));
    EXPECT_EQ(tray.icon, TrayIcon::BackendRunning);
    EXPECT_EQ(tray.description, u"Backend Running"_s);
}

TEST_F(AppDelegateTest, aBackendThatGoesTakesItsIconAlong) {
    launch();
    delegate->backendStatusChanged(true);
    delegate->backendStatusChanged(false);
    EXPECT_TRUE(log.contains(u"📢 Backend Status Changed: false"_s));
    EXPECT_EQ(tray.icon, TrayIcon::Idle);
}

TEST_F(AppDelegateTest, translatingShowsAlsoWhileTheBackendIsStopped) {
    launch();
    delegate->translationStatusChanged(true);
    EXPECT_TRUE(log.contains(u"📢 Translation Status Changed: true"_s));
    EXPECT_EQ(tray.icon, TrayIcon::Translating);
    EXPECT_EQ(tray.description, u"Translating"_s);
    delegate->translationStatusChanged(false);
    EXPECT_EQ(tray.icon, TrayIcon::Idle);
}

TEST_F(AppDelegateTest, theIconFallsBackToTheBackendsStateWhenTranslationEnds) {
    launch();
    delegate->translationStatusChanged(true);
    delegate->backendStatusChanged(true);
    EXPECT_EQ(tray.icon, TrayIcon::Translating);
    delegate->translationStatusChanged(false);
    EXPECT_EQ(tray.icon, TrayIcon::BackendRunning);
}

TEST_F(AppDelegateTest, anInterruptionShowsInFrontOfEverythingElse) {
    launch();
    delegate->backendStatusChanged(true);
    delegate->translationStatusChanged(true);
    delegate->showInterruption(u"The link is lost."_s);
    EXPECT_EQ(tray.icon, TrayIcon::Interrupted);
    EXPECT_EQ(tray.description, u"The link is lost."_s);
    delegate->backendStatusChanged(false);
    EXPECT_EQ(tray.icon, TrayIcon::Interrupted);
    delegate->showInterruption({});
    EXPECT_EQ(tray.icon, TrayIcon::Translating);
    EXPECT_EQ(tray.description, u"Translating"_s);
}

TEST_F(AppDelegateTest, quitStopsTheBackendWhateverTheSettingSays) {
    settings.autoStopBackend.set(false);
    launch();
    tray.click(TrayClick::Secondary);
    tray.menus.value(0).value(4).action();
    EXPECT_TRUE(log.contains(u"🛑 App wird beendet..."_s));
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
    EXPECT_EQ(terminations, 0);
    EXPECT_TRUE(waitUntil([this] { return terminations == 1; }));
    EXPECT_EQ(backend.calls.size(), 1) << "a stopped backend is not stopped again";
}

TEST_F(AppDelegateTest, quitStopsABackendThatStillRunsASecondTime) {
    backend.running = true;
    launch();
    delegate->quitApp();
    EXPECT_TRUE(waitUntil([this] { return terminations == 1; }));
    EXPECT_TRUE(log.contains(u"⚠️ Backend noch aktiv, force stop..."_s));
    EXPECT_EQ(backend.calls, (QStringList{u"stopBackend"_s, u"stopBackend"_s}));
}

TEST_F(AppDelegateTest, quitEndsTheProgramTwoSecondsLater) {
    launch({}, {});
    QElapsedTimer clock;
    clock.start();
    delegate->quitApp();
    ASSERT_TRUE(waitUntil([this] { return terminations == 1; }));
    EXPECT_GE(clock.elapsed(), 1990);
}

TEST_F(AppDelegateTest, quittingTwiceEndsOnce) {
    launch();
    delegate->quitApp();
    delegate->quitApp();
    EXPECT_EQ(log.count(u"🛑 App wird beendet..."_s), 1);
    ASSERT_TRUE(waitUntil([this] { return terminations == 1; }));
    drainEvents();
    EXPECT_EQ(terminations, 1);
}

TEST_F(AppDelegateTest, quittingByThePanelAsWellChangesNothing) {
    launch();
    bool runStopped = false;
    delegate->quitApp();
    quit->fromPanel([&runStopped] { runStopped = true; });
    ASSERT_TRUE(waitUntil([this] { return terminations == 1; }));
    drainEvents();
    EXPECT_EQ(terminations, 1);
    EXPECT_FALSE(runStopped);
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
}

TEST_F(AppDelegateTest, terminationStopsOverlayServerAndBackend) {
    enableOverlayServer();
    launch();
    ASSERT_TRUE(waitUntil([this] { return overlayServer.isRunning(); }));
    delegate->applicationWillTerminate();
    EXPECT_TRUE(waitUntil([this] { return !overlayServer.isRunning(); }));
    EXPECT_TRUE(log.contains(u"App wird beendet - stoppe Backend (autoStopBackend=true)..."_s));
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
}

TEST_F(AppDelegateTest, terminationLeavesTheBackendWhenTheUserWantsItToStay) {
    settings.autoStopBackend.set(false);
    enableOverlayServer();
    launch();
    ASSERT_TRUE(waitUntil([this] { return overlayServer.isRunning(); }));
    delegate->applicationWillTerminate();
    EXPECT_TRUE(waitUntil([this] { return !overlayServer.isRunning(); }));
    EXPECT_TRUE(log.contains(u"App wird beendet - Backend läuft weiter (autoStopBackend=false)"_s));
    EXPECT_EQ(backend.calls, QStringList{u"leaveRunning"_s});
}

TEST_F(AppDelegateTest, asksForAlertsBadgesAndSounds) {
    launch();
    EXPECT_EQ(userNotifications.options.toInt(), 7);
    log.clear();
    userNotifications.answer({.granted = true, .error = {}});
    EXPECT_EQ(log.lines(), QStringList{u"✓ Benachrichtigungs-Berechtigung erteilt"_s});
}

TEST_F(AppDelegateTest, saysWhyNotificationsAreNotGranted) {
    launch();
    log.clear();
    userNotifications.answer({.granted = false, .error = u"no such service"_s});
    userNotifications.answer({});
    EXPECT_EQ(log.lines(),
              (QStringList{u"⚠️  Benachrichtigungs-Berechtigung: no such service"_s,
                           u"⚠️  Benachrichtigungs-Berechtigung: false"_s}));
}

TEST_F(AppDelegateTest, anUpdateIsOfferedAndOpenedWhenTheUserSaysSo) {
    launch();
    delegate->showUpdateAlert(u"4.10"_s, u"Better."_s, u"https://example.org/orv"_s);
    ASSERT_EQ(dialogs.alerts.size(), 1);
    const Alert alert = dialogs.alerts.first();
    EXPECT_EQ(alert.style, AlertStyle::Informational);
    EXPECT_EQ(alert.icon, AlertIcon::Update);
    EXPECT_EQ(alert.title, u"ORV Update v4.10"_s);
    EXPECT_EQ(alert.message, u"Better."_s);
    EXPECT_EQ(alert.buttons, (QStringList{u"<info.update.download>"_s, u"<info.update.later>"_s}));
    EXPECT_TRUE(opener.addresses.isEmpty());
    dialogs.answers.first()(1);
    EXPECT_TRUE(opener.addresses.isEmpty());
    dialogs.answers.first()(0);
    EXPECT_EQ(opener.addresses, QStringList{u"https://example.org/orv"_s});
}

TEST_F(AppDelegateTest, anUpdateWithoutNotesSaysThatThereIsOne) {
    launch();
    delegate->showUpdateAlert(u"4.10"_s, QString(), u"https://example.org/orv"_s);
    delegate->showUpdateAlert(u"4.10"_s, u" \n "_s, u"https://example.org/orv"_s);
    EXPECT_EQ(dialogs.alerts.first().message, u"<info.update.available>"_s);
    EXPECT_EQ(dialogs.alerts.last().message, u"<info.update.available>"_s) << "blanks are no notes";
}

TEST_F(AppDelegateTest, aSecondStartShowsThePanelAtTheItem) {
    launch();
    EXPECT_TRUE(delegate->showPanel());
    EXPECT_EQ(panel.calls, (QStringList{u"close"_s, u"showBeside 700,0"_s}));
    EXPECT_TRUE(delegate->showPanel()) << "also when it is open";
    EXPECT_EQ(panel.calls.size(), 3);
    EXPECT_TRUE(panel.shown);
}

TEST_F(AppDelegateTest, aSecondStartShowsTheWindowWhereThereIsNoTray) {
    tray.available = false;
    launch();
    EXPECT_TRUE(delegate->showPanel());
    EXPECT_EQ(panel.calls, (QStringList{u"showAsWindow"_s, u"showAsWindow"_s}));
}

TEST_F(AppDelegateTest, aSecondStartIsNotShownAProgramThatQuits) {
    launch();
    delegate->quitApp();
    EXPECT_FALSE(delegate->showPanel());
    EXPECT_TRUE(panel.calls.isEmpty());
}

TEST_F(AppDelegateTest, aSecondStartIsNotShownAProgramThatQuitsByItsPanel) {
    launch();
    quit->fromPanel([] {});
    EXPECT_FALSE(delegate->showPanel());
    EXPECT_TRUE(panel.calls.isEmpty());
}

TEST_F(AppDelegateTest, theSettingsWindowIsMadeOnFirstUseAndKept) {
    launch();
    EXPECT_TRUE(settingsWindows.isEmpty());
    delegate->showSettingsWindow();
    ASSERT_EQ(settingsWindows.size(), 1);
    QWidget& window = *settingsWindows.first();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.windowFlags().testFlags(Qt::WindowTitleHint | Qt::WindowCloseButtonHint));
    EXPECT_FALSE(window.windowFlags() & Qt::WindowMinMaxButtonsHint);
    const QPoint middle = window.screen()->availableGeometry().center();
    EXPECT_LE((window.geometry().center() - middle).manhattanLength(), 8) << "but for its frame";
    window.close();
    EXPECT_FALSE(window.isVisible());
    delegate->showSettingsWindow();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(settingsWindows.size(), 1);
    EXPECT_EQ(terminations, 0) << "closing it never ends the program";
}

TEST_F(AppDelegateTest, startsNoBackendOnceItQuits) {
    settings.autoStartBackend.set(true);
    launch();
    delegate->quitApp();
    ASSERT_TRUE(waitUntil([this] { return terminations == 1; }));
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
}

TEST_F(AppDelegateTest, startsNoBackendOnceItQuitsByItsPanel) {
    settings.autoStartBackend.set(true);
    launch();
    quit->fromPanel([] {});
    // The timer of the launch comes before this one.
    bool later = false;
    QTimer::singleShot(2 * soon, Qt::PreciseTimer, delegate.get(), [&] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }));
    EXPECT_EQ(backend.calls, QStringList{u"stopBackend"_s});
}

} // namespace

} // namespace orv::test
