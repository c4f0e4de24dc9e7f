#include "BackendFixture.h"
#include "ProcessTable.h"
#include "WaitUntil.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

/// Puts the parts back that `uninstall` has set aside.
const QString restore = uR"(
echo '==> [1/2] Looking'
mv "$home/server.aside" "$home/Library/Application Support/Orvane/backend/server.py"
echo '==> [2/2] Installed'
)"_s;

} // namespace

class TranslationEngineInstall : public BackendFixture {
  protected:
    /// A backend that is not there until the installer brings it.
    void uninstall() {
        installBackend(programs::waitForSignal);
        ASSERT_TRUE(QFile::rename(environment().script, home() + u"/server.aside"));
    }

    void startAndInstall() {
        engine().startBackend();
        ASSERT_EQ(dialogs.alerts.size(), 1);
        dialogs.choose(0);
    }

    bool writesSoon(const QString& name) {
        return waitUntil([&] { return !readHomeFile(name).isEmpty(); });
    }
};

TEST_F(TranslationEngineInstall, theAlertOffersIt) {
    offerInstaller(restore);
    engine().startBackend();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts.first().buttons,
              (QStringList{u"alert.backend.install"_s, u"alert.ok"_s}));
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
}

TEST_F(TranslationEngineInstall, nothingIsInstalledUnlessTheUserSaysSo) {
    offerInstaller(u"touch $home/ran"_s);
    engine().startBackend();
    dialogs.choose(1);
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
    EXPECT_EQ(childCount(), 0);
    EXPECT_FALSE(QFileInfo::exists(home() + u"/ran"));
}

TEST_F(TranslationEngineInstall, theBackendStartsOnceItIsInstalled) {
    uninstall();
    offerInstaller(restore);
    startAndInstall();
    EXPECT_EQ(status(), u"engine.installing"_s);
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"Backend:ready"_s); }));
    EXPECT_TRUE(log.contains(u"✓ Backend installiert"_s));
    EXPECT_TRUE(log.contains(u"Backend-Installation: [2/2] Installed"_s));
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_EQ(dialogs.alerts.size(), 1);
}

TEST_F(TranslationEngineInstall, theStatusSaysHowFarItIs) {
    environment().text = [](const QString& key) {
        return key == u"engine.installing" ? u"Installing (%1)"_s : key;
    };
    offerInstaller(u"echo '==> [2/3] Working'; read -r < <(sleep 100)"_s);
    QStringList shown;
    QObject::connect(&engine(), &TranslationEngine::statusMessageChanged, &engine(),
                     [&](const QString& text) { shown.append(text); });
    startAndInstall();
    EXPECT_EQ(status(), u"Installing (…)"_s);
    EXPECT_TRUE(waitUntil([&] { return shown.contains(u"Installing (2/3)"_s); }));
}

TEST_F(TranslationEngineInstall, startingMeanwhileOnlyReportsInstalling) {
    offerInstaller(u"touch $home/ran; read -r < <(sleep 100)"_s);
    startAndInstall();
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.installing"_s);
    EXPECT_EQ(dialogs.alerts.size(), 1) << "no second alert";
}

TEST_F(TranslationEngineInstall, aBackendThatWasStoppedMeanwhileIsNotStarted) {
    uninstall();
    offerInstaller(restore);
    startAndInstall();
    EXPECT_TRUE(engine().isBusy());
    engine().stopBackend();
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"✓ Backend installiert"_s); }));
    EXPECT_TRUE(waitUntil([this] { return status() == u"engine.stopped"; }));
    EXPECT_FALSE(engine().isBusy());
    EXPECT_FALSE(log.contains(u"Backend:ready"_s));
}

TEST_F(TranslationEngineInstall, aFailureIsToldWithItsLastLine) {
    offerInstaller(u"echo '==> [1/3] Looking'; echo 'error: The disk is full.' >&2; exit 3"_s);
    startAndInstall();
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    const Alert& alert = dialogs.alerts.last();
    EXPECT_EQ(alert.style, AlertStyle::Warning);
    EXPECT_EQ(alert.title, u"alert.install.failed.title"_s);
    EXPECT_EQ(alert.message, u"The disk is full."_s);
    EXPECT_EQ(alert.buttons, QStringList{u"alert.ok"_s});
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
    EXPECT_TRUE(log.contains(u"❌ Backend-Installation beendet mit Code: 3"_s));
}

TEST_F(TranslationEngineInstall, aMissingInstallerIsAFailureThatSaysSo) {
    environment().installer = home() + u"/nowhere";
    startAndInstall();
    ASSERT_EQ(dialogs.alerts.size(), 2);
    EXPECT_EQ(dialogs.alerts.last().message, u"No such file or directory"_s);
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
}

TEST_F(TranslationEngineInstall, aFailureDoesNotDenyABackendThatRunsAllTheSame) {
    offerInstaller(u"while [ ! -e $home/go ]; do sleep 0.01; done; exit 3"_s);
    startAndInstall();
    probe.inUse = true; // Somebody else has started one.
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.running"_s);
    writeHomeFile(u"go"_s, u"."_s);
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    EXPECT_EQ(status(), u"engine.running"_s);
    EXPECT_TRUE(engine().isRunning());
}

TEST_F(TranslationEngineInstall, theInstallerIsToldTheHomeDirectory) {
    environment().home = u"/somewhere/ü"_s;
    offerInstaller(u"echo \"$HOME\"; exit 3"_s);
    startAndInstall();
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    EXPECT_EQ(dialogs.alerts.last().message, u"/somewhere/ü"_s);
}

TEST_F(TranslationEngineInstall, itCanBeTriedAgainAfterAFailure) {
    uninstall();
    offerInstaller(u"[ -e $home/again ] || { touch $home/again; exit 1; }\n"_s + restore);
    startAndInstall();
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    engine().startBackend();
    ASSERT_EQ(dialogs.alerts.size(), 3);
    dialogs.choose(0);
    EXPECT_TRUE(waitUntil([this] { return log.contains(u"Backend:ready"_s); }));
}

TEST_F(TranslationEngineInstall, anInstallationThatBringsNothingAsksAgainRatherThanForEver) {
    offerInstaller(u"exit 0"_s);
    startAndInstall();
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    EXPECT_EQ(dialogs.alerts.last().title, u"alert.backend.notfound.title"_s);
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
}

TEST_F(TranslationEngineInstall, theEndOfTheProgramEndsItWithAllThatItStarted) {
    offerInstaller(u"sleep 1000 & echo $! > $home/child.part\n"
                   "mv $home/child.part $home/child; wait"_s);
    environment().timings.stopPause = 10s; // It ends at SIGTERM; nobody waits that long.
    startAndInstall();
    ASSERT_TRUE(writesSoon(u"child"_s));
    const pid_t child = readHomeFile(u"child"_s).toInt();
    EXPECT_EQ(::kill(child, 0), 0);
    destroyEngine();
    EXPECT_EQ(childCount(), 0);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(child); }));
}

TEST_F(TranslationEngineInstall, anAnswerAfterTheEndDoesNothing) {
    offerInstaller(u"touch $home/ran"_s);
    engine().startBackend();
    destroyEngine();
    dialogs.choose(0);
    EXPECT_EQ(childCount(), 0);
}

} // namespace orv::test
