#include "BackendFixture.h"
#include "ProcessTable.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

class TranslationEngineStart : public BackendFixture {};

TEST_F(TranslationEngineStart, isStoppedWhenMade) {
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(probe.count, 0);
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(TranslationEngineStart, adoptsWhatUsesThePortWithoutLaunchingAnything) {
    installBackend(programs::waitForSignal);
    probe.inUse = true;
    engine().startBackend();
    EXPECT_TRUE(engine().isRunning());
    EXPECT_EQ(status(), u"engine.running"_s);
    EXPECT_EQ(lines(), QStringList{u"✓ Backend läuft bereits auf Port 8765"_s});
    EXPECT_EQ(posted, QList<bool>{true});
    EXPECT_EQ(probe.lastPort, 8765);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStart, watchesAnAdoptedBackend) {
    probe.inUse = true;
    engine().startBackend();
    EXPECT_TRUE(waitUntil([this] { return probe.count >= 3; }));
}

TEST_F(TranslationEngineStart, launchesInTheOrderOfItsLines) {
    installBackend(u"signal.pause()"_s);
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_FALSE(engine().isRunning());
    const QString support = home() + u"/Library/Application Support/Orvane"_s;
    const QString python = u"🔍 Suche Python: "_s + support + u"/venv/bin/python3"_s;
    const QString server = u"🔍 Suche Server: "_s + support + u"/backend/server.py"_s;
    EXPECT_EQ(
        lines(),
        (QStringList{python, server,
                     u"✓ Backend-Prozess gestartet, warte 6 Sekunden auf Modell-Laden..."_s}));
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(TranslationEngineStart, startingTwiceQuicklyLaunchesOnceAndOnlyReportsStarting) {
    installBackend(u"signal.pause()"_s);
    environment().timings.modelLoading = 20s;
    engine().startBackend();
    const int children = childCount();
    log.clear();
    engine().startBackend();
    EXPECT_EQ(lines(), QStringList{u"⚠️ Backend-Prozess läuft, warte auf Port..."_s});
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_EQ(childCount(), children);
}

TEST_F(TranslationEngineStart, saysThatItRunsWhenThePortClosedAMomentAgo) {
    installBackend(programs::waitForSignal);
    environment().timings.liveness = 20s;
    probe.inUse = true;
    engine().startBackend();
    probe.inUse = false;
    log.clear();
    engine().startBackend();
    EXPECT_EQ(lines(), QStringList{u"Backend läuft bereits"_s});
    EXPECT_TRUE(engine().isRunning());
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStart, withoutInterpreterTellsHowToInstall) {
    installBackend(programs::waitForSignal);
    QFile::remove(environment().interpreter);
    engine().startBackend();
    EXPECT_EQ(linesWith({u"existiert"_s}),
              (QStringList{u"❌ Python existiert? false"_s, u"❌ Server existiert? true"_s}));
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
    ASSERT_EQ(dialogs.alerts.size(), 1);
    const Alert& alert = dialogs.alerts.front();
    EXPECT_EQ(alert.style, AlertStyle::Warning);
    EXPECT_EQ(alert.title, u"alert.backend.notfound.title"_s);
    EXPECT_EQ(alert.message, u"alert.backend.notfound.msg"_s);
    EXPECT_EQ(alert.buttons, QStringList{u"alert.ok"_s});
    EXPECT_TRUE(posted.isEmpty());
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStart, withoutScriptLaunchesNothing) {
    installBackend(programs::waitForSignal);
    QFile::remove(environment().script);
    engine().startBackend();
    EXPECT_EQ(linesWith({u"existiert"_s}),
              (QStringList{u"❌ Python existiert? true"_s, u"❌ Server existiert? false"_s}));
    EXPECT_EQ(status(), u"engine.notinstalled"_s);
    EXPECT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStart, aLaunchErrorIsToldAndNotTriedAgain) {
    installBackend(programs::waitForSignal);
    QFile::remove(environment().interpreter);
    QFile notExecutable(environment().interpreter);
    ASSERT_TRUE(notExecutable.open(QIODevice::WriteOnly));
    notExecutable.close();
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.failed"_s);
    EXPECT_EQ(lines().last(), u"Failed to start backend: Permission denied"_s);
    const int probes = probe.count;
    letPass(5 * environment().timings.modelLoading);
    EXPECT_EQ(probe.count, probes) << "no look at the port is scheduled";
    EXPECT_EQ(status(), u"engine.failed"_s);
    EXPECT_TRUE(posted.isEmpty());
    EXPECT_TRUE(dialogs.alerts.isEmpty());
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStart, handsTheScriptOverAsTheOnlyArgument) {
    installBackend(u"say(str(sys.argv == [os.path.realpath(home) + "
                   u"'/Library/Application Support/Orvane/backend/server.py']))\n"_s +
                   programs::waitForSignal);
    engine().startBackend();
    EXPECT_TRUE(waitUntil([this] { return log.containsStart(u"Backend:True"_s); }));
}

TEST_F(TranslationEngineStart, theChildInheritsFolderAndEnvironment) {
    qputenv("ORV_TEST_INHERITED", "one two=three");
    installBackend(u"say(os.getcwd() + '|' + os.environ['ORV_TEST_INHERITED'])\n"_s +
                   programs::waitForSignal);
    engine().startBackend();
    const QString expected = u"Backend:"_s + QDir::currentPath() + u"|one two=three"_s;
    EXPECT_TRUE(waitUntil([&] { return log.containsStart(expected); })) << qPrintable(expected);
    qunsetenv("ORV_TEST_INHERITED");
}

TEST_F(TranslationEngineStart, networkAccessTakesEffectAtTheNextStart) {
    installBackend(u"say('host=' + os.environ['ORV_BIND_HOST'] + ';')\n"_s +
                   programs::waitForSignal);
    engine().startBackend();
    ASSERT_TRUE(waitUntil([this] { return log.containsStart(u"Backend:host=localhost;"_s); }));
    networkAccess = true;
    const auto hosts = [this] { return linesWith({u"host="_s}).size(); };
    EXPECT_EQ(hosts(), 1) << "a running backend does not notice";
    engine().stopBackend();
    ASSERT_TRUE(waitUntil([this] { return log.contains(u"✓ Backend gestoppt"_s); }));
    engine().startBackend();
    EXPECT_TRUE(waitUntil([this] { return log.containsStart(u"Backend:host=0.0.0.0;"_s); }));
    EXPECT_EQ(hosts(), 2);
}

TEST_F(TranslationEngineStart, theBindHostReplacesOneInTheProgramsOwnEnvironment) {
    qputenv("ORV_BIND_HOST", "10.0.0.1");
    installBackend(u"say('host=' + os.environ['ORV_BIND_HOST'] + ';')\n"_s +
                   programs::waitForSignal);
    engine().startBackend();
    EXPECT_TRUE(waitUntil([this] { return log.containsStart(u"Backend:host=localhost;"_s); }));
    qunsetenv("ORV_BIND_HOST");
}

TEST_F(TranslationEngineStart, anEmptyReadAtTheEndOfTheOutputPrintsNothing) {
    installBackend(u"os.close(1)\nos.close(2)\nsys.exit = os._exit\nos._exit(0)"_s);
    engine().startBackend();
    ASSERT_TRUE(waitUntil([this] { return log.contains(u"Backend beendet mit Code: 0"_s); }));
    EXPECT_FALSE(log.containsStart(u"Backend:"_s));
}

TEST_F(TranslationEngineStart, echoesWhatTheBackendPrintsOnEitherStream) {
    installBackend(u"say('läuft')\nsys.stderr.write('Fehler 🛑\\n')\n"_s);
    engine().startBackend();
    ASSERT_TRUE(waitUntil([this] { return log.contains(u"Backend beendet mit Code: 0"_s); }));
    // How the two arrive in pieces is up to the system.
    const QString text = linesWith({u"Backend:"_s}).join(QString()).remove(u"Backend:"_s);
    EXPECT_EQ(text.simplified().remove(u' '), u"läuftFehler🛑"_s);
    const QStringList words = linesWith({u"Backend:"_s, u"Backend beendet"_s});
    EXPECT_EQ(words.last(), u"Backend beendet mit Code: 0"_s)
        << "the last words come before the end is told";
}

} // namespace orv::test
