#include "BackendFixture.h"
#include "Ports.h"
#include "ProcessTable.h"
#include "SystemPortProbe.h"
#include "WaitUntil.h"

#include <QProcess>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

class TranslationEngineStop : public BackendFixture {
  protected:
    TranslationEngineStop() { environment().timings.modelLoading = 20s; }

    bool waitForLine(const QString& line, qsizetype count = 1) {
        return waitUntil([&] { return log.count(line) >= count; });
    }

    /// The lines of stopping and ending, in order.
    QStringList stopLines() const {
        return linesWith({u"Stoppe"_s, u"reagiert nicht"_s, u"beendet mit"_s, u"gestoppt"_s});
    }

    const QString stopping = u"🛑 Stoppe Backend..."_s;
    const QString interrupting = u"⚠️ Backend reagiert nicht auf SIGTERM, sende SIGINT..."_s;
    const QString killing = u"⚠️ Backend reagiert nicht, sende SIGKILL..."_s;
    const QString stopped = u"✓ Backend gestoppt"_s;
};

TEST_F(TranslationEngineStop, saysSoWhenNothingRuns) {
    engine().stopBackend();
    EXPECT_EQ(lines(), QStringList{u"Backend läuft nicht"_s});
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(TranslationEngineStop, aBackendThatObeysIsSentSigtermOnly) {
    installBackend(programs::waitForSignal);
    environment().timings.stopPause = 1min; // Nothing but SIGTERM is sent before.
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().stopBackend();
    EXPECT_EQ(status(), u"engine.stopping"_s);
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 15"_s));
    EXPECT_EQ(stopLines(), (QStringList{stopping, u"Backend beendet mit Code: 15"_s}));
    EXPECT_EQ(posted, QList<bool>{false});
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_FALSE(isAlive(pid));
}

TEST_F(TranslationEngineStop, keepsTheRunningFlagWhileStopping) {
    installBackend(programs::obeysOnlyInt);
    environment().timings.modelLoading = 1ms;
    environment().timings.liveness = 20s;
    probe.inUse = false;
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitUntil([this] { return posted == QList<bool>{true}; }));
    engine().stopBackend();
    EXPECT_TRUE(engine().isRunning());
    EXPECT_EQ(status(), u"engine.stopping"_s);
    ASSERT_TRUE(waitForLine(stopped));
    EXPECT_FALSE(engine().isRunning());
}

TEST_F(TranslationEngineStop, aBackendThatIgnoresSigtermIsSentSigint) {
    installBackend(programs::obeysOnlyInt);
    environment().timings.stopPause = 3s; // It obeys and ends within the second pause.
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(stopped));
    EXPECT_EQ(stopLines(),
              (QStringList{stopping, interrupting, u"Backend beendet mit Code: 7"_s, stopped}));
}

TEST_F(TranslationEngineStop, aBackendThatIgnoresBothIsKilledAfterTwoPauses) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(stopped));
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(posted, QList<bool>{false});
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_EQ(stopLines(), (QStringList{stopping, interrupting, killing, stopped,
                                        u"Backend beendet mit Code: 9"_s}));
    EXPECT_EQ(posted, (QList<bool>{false, false}));
    EXPECT_FALSE(isAlive(pid));
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStop, proceedsWhileTheBackendIsStillStarting) {
    installBackend(programs::waitForSignal);
    engine().startBackend();
    EXPECT_FALSE(engine().isRunning());
    engine().stopBackend();
    EXPECT_EQ(status(), u"engine.stopping"_s);
    // The end may be told before the last step or after it.
    ASSERT_TRUE(waitForLine(stopped));
    ASSERT_TRUE(waitUntil([this] { return log.containsStart(u"Backend beendet mit Code: "_s); }));
    EXPECT_EQ(posted, (QList<bool>{false, false})) << "once at the end, once after the last step";
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStop, aLookAtThePortThatWasDueAfterTheStopFindsNothing) {
    installBackend(programs::waitForSignal);
    environment().timings.modelLoading = 5s; // Long after the last step of the stop.
    engine().startBackend();
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(stopped));
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_TRUE(waitUntil([this] { return status() == u"engine.notstarted"_s; }));
}

TEST_F(TranslationEngineStop, anAdoptedBackendIsNeverSentASignal) {
    const quint16 port = freePort();
    QProcess foreign;
    foreign.start(u"/usr/bin/python3"_s, {u"-c"_s, u"import signal, socket\n"
                                                   u"listener = socket.socket()\n"
                                                   u"listener.bind(('127.0.0.1', %1))\n"
                                                   u"listener.listen()\n"
                                                   u"print('ready', flush=True)\n"
                                                   u"signal.pause()"_s.arg(port)});
    ASSERT_TRUE(foreign.waitForReadyRead());
    SystemPortProbe realProbe;
    environment().timings.liveness = 1h; // The steps of the stop need no tick between them.
    BackendEnvironment& base = environment();
    TranslationEngine engine({.interpreter = base.interpreter,
                              .script = base.script,
                              .probe = realProbe,
                              .dialogs = dialogs,
                              .text = base.text,
                              .networkAccess = base.networkAccess,
                              .timings = base.timings,
                              .port = port});
    note(engine);
    engine.startBackend();
    ASSERT_TRUE(engine.isRunning());
    engine.stopBackend();
    EXPECT_TRUE(engine.isRunning()) << "nothing changes before the last step";
    EXPECT_EQ(engine.statusMessage(), u"engine.stopping"_s);
    ASSERT_TRUE(waitForLine(stopped));
    EXPECT_FALSE(engine.isRunning());
    EXPECT_EQ(stopLines(), (QStringList{stopping, stopped}));
    EXPECT_EQ(posted, (QList<bool>{true, false}));
    letPass(20ms);
    EXPECT_EQ(foreign.state(), QProcess::Running);
    foreign.kill();
    foreign.waitForFinished();
}

TEST_F(TranslationEngineStop, theTickEndsWithTheStop) {
    probe.inUse = true;
    engine().startBackend();
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(stopped));
    const int probes = probe.count;
    probe.inUse = false;
    letPass(5 * environment().timings.liveness);
    EXPECT_EQ(probe.count, probes);
    EXPECT_EQ(status(), u"engine.stopped"_s);
}

TEST_F(TranslationEngineStop, askingTwiceRunsBothSequencesToTheirEnd) {
    installBackend(programs::ignoresTermAndInt);
    environment().timings.stopPause = 100ms;
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(interrupting)); // In the second pause, as when the program quits.
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(stopped, 2));
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_EQ(log.count(stopping), 2);
    EXPECT_EQ(log.count(interrupting), 1);
    EXPECT_EQ(log.count(killing), 1);
    EXPECT_EQ(log.count(u"Backend beendet mit Code: 9"_s), 1);
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStop, aBackendStartedWhileItStopsIsStartedAgainAfterItsEnd) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t first = backendPid();
    engine().stopBackend();
    engine().startBackend();
    EXPECT_EQ(lines().last(), u"⚠️ Backend-Prozess läuft, warte auf Port..."_s);
    EXPECT_EQ(status(), u"engine.starting"_s);
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_FALSE(isAlive(first));
    EXPECT_EQ(status(), u"engine.starting"_s);
    ASSERT_TRUE(waitUntil([&] { return backendPid() != first; }));
    EXPECT_TRUE(isAlive(backendPid()));
}

TEST_F(TranslationEngineStop, aStartWhileItStopsIsTakenBackByAnotherStop) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopBackend();
    engine().startBackend();
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStop, aBackendAdoptedDuringAStopIsNotForgottenAtItsEnd) {
    probe.inUse = true;
    engine().startBackend();
    engine().stopBackend();
    engine().startBackend();
    posted.clear();
    letPass(4 * environment().timings.stopPause);
    EXPECT_TRUE(engine().isRunning());
    EXPECT_EQ(status(), u"engine.running"_s);
    EXPECT_FALSE(log.contains(stopped));
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(TranslationEngineStop, afterAStopForGoodNothingIsStarted) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopForGood();
    engine().startBackend();
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 15"_s));
    log.clear();
    engine().startBackend();
    EXPECT_TRUE(lines().isEmpty());
    EXPECT_EQ(status(), u"engine.stopped"_s);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineStop, theRestOfAStopDoesNotTouchABackendStartedMeanwhile) {
    installBackend(programs::waitForSignal);
    environment().timings.stopPause = 200ms;
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 15"_s));
    installBackend(programs::ignoresTermAndInt); // Would have to be sent more than one signal.
    log.clear();
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    letPass(3 * environment().timings.stopPause);
    EXPECT_TRUE(isAlive(pid));
    EXPECT_TRUE(stopLines().isEmpty()) << qPrintable(stopLines().join(u'\n'));
    EXPECT_EQ(status(), u"engine.starting"_s);
}

TEST_F(TranslationEngineStop, theLateEndOfAReplacedBackendChangesNothing) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t first = backendPid();
    ::kill(first, SIGKILL);
    while (isAlive(first)) { // The event loop must not run yet: it would tell of the end.
    }
    engine().startBackend();
    EXPECT_FALSE(log.containsStart(u"Backend beendet"_s));
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_TRUE(posted.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return backendPid() != first; }));
    EXPECT_TRUE(isAlive(backendPid()));
}

TEST_F(TranslationEngineStop, theEndOfAKilledBackendDoesNotTouchTheNextOne) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    // Starts again in the very step that kills the first one.
    bool startAgain = true;
    QObject::connect(&engine(), &TranslationEngine::BackendStatusChanged, &engine(), [&] {
        if (std::exchange(startAgain, false)) {
            engine().startBackend();
        }
    });
    engine().stopBackend();
    ASSERT_TRUE(waitForLine(u"Backend beendet mit Code: 9"_s));
    EXPECT_LT(lines().indexOf(stopped), lines().lastIndexOf(u"Backend beendet mit Code: 9"_s));
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_EQ(posted, QList<bool>{false}) << "only the stop itself was told";
}

} // namespace orv::test
