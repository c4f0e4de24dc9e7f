#include "BackendFixture.h"
#include "Ports.h"
#include "ProcessTable.h"
#include "SystemPortProbe.h"
#include "WaitUntil.h"

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

/// What happens between the launch and the stop.
class TranslationEngineWatch : public BackendFixture {
  protected:
    bool waitForStatus(const QString& key) {
        return waitUntil([&] { return status() == key; });
    }
};

TEST_F(TranslationEngineWatch, runsOnceThePortIsSeenOpen) {
    installBackend(programs::waitForSignal);
    engine().startBackend();
    probe.inUse = true;
    ASSERT_TRUE(waitForStatus(u"engine.running"_s));
    EXPECT_TRUE(engine().isRunning());
    EXPECT_TRUE(log.contains(u"✓ Backend läuft auf Port 8765"_s));
    EXPECT_TRUE(waitUntil([this] { return posted == QList<bool>{true}; }));
}

TEST_F(TranslationEngineWatch, tellsOfThePortAfterTheStepThatSawIt) {
    installBackend(programs::waitForSignal);
    bool saidBefore = false;
    QObject::connect(&engine(), &TranslationEngine::BackendStatusChanged, &engine(),
                     [&] { saidBefore = log.contains(u"✓ Backend läuft auf Port 8765"_s); });
    engine().startBackend();
    probe.inUse = true;
    ASSERT_TRUE(waitUntil([this] { return !posted.isEmpty(); }));
    EXPECT_TRUE(saidBefore);
}

TEST_F(TranslationEngineWatch, asksForAClosedPortAgainAndAgainWhileTheProcessLives) {
    installBackend(programs::waitForSignal);
    engine().startBackend();
    const QString waiting = u"⏳ Backend-Prozess läuft, Port noch nicht offen..."_s;
    ASSERT_TRUE(waitUntil([&] { return log.count(waiting) >= 5; }));
    EXPECT_EQ(status(), u"engine.starting"_s);
    EXPECT_FALSE(engine().isRunning());
    EXPECT_TRUE(posted.isEmpty());
    probe.inUse = true;
    EXPECT_TRUE(waitForStatus(u"engine.running"_s));
}

TEST_F(TranslationEngineWatch, aBackendThatOpensItsPortLateIsSeenByTheRealProbe) {
    SystemPortProbe realProbe;
    const quint16 port = freePort();
    BackendEnvironment& base = environment();
    BackendEnvironment real{.interpreter = base.interpreter,
                            .script = base.script,
                            .probe = realProbe,
                            .dialogs = dialogs,
                            .text = base.text,
                            .networkAccess = base.networkAccess,
                            .mayOutlive = base.mayOutlive,
                            .timings = base.timings,
                            .port = port};
    real.timings.liveness = 1h; // No tick: the port closes with the process, which must do.
    installBackend(u"listener = socket.socket()\n"
                   u"while not os.path.exists(home + '/open'): time.sleep(0.005)\n"
                   u"listener.bind(('127.0.0.1', %1))\n"
                   u"listener.listen()\n"_s.arg(port) +
                   programs::waitForSignal);
    TranslationEngine engine(real);
    note(engine);
    engine.startBackend();
    ASSERT_TRUE(waitUntil([&] { return log.containsStart(u"⏳"_s); }));
    EXPECT_FALSE(engine.isRunning());
    writeHomeFile(u"open"_s, {});
    ASSERT_TRUE(waitUntil([&] { return engine.isRunning(); }));
    EXPECT_TRUE(log.contains(u"✓ Backend läuft auf Port %1"_s.arg(port)));

    // It is the end of the process that is noticed.
    ::kill(backendPid(), SIGKILL);
    EXPECT_TRUE(waitUntil([&] { return engine.statusMessage() == u"engine.stopped"_s; }));
    EXPECT_TRUE(waitUntil([&] { return posted == (QList<bool>{true, false}); }));
}

TEST_F(TranslationEngineWatch, aBackendThatDiesAtOnceIsFirstStoppedThenNotStarted) {
    installBackend(u"sys.exit(3)"_s);
    environment().timings.modelLoading = 2s; // The process ends before the look at the port.
    QStringList published;
    QObject::connect(&engine(), &TranslationEngine::statusMessageChanged, &engine(),
                     [&](const QString& text) { published.append(text); });
    engine().startBackend();
    ASSERT_TRUE(waitForStatus(u"engine.notstarted"_s));
    EXPECT_EQ(published,
              (QStringList{u"engine.starting"_s, u"engine.stopped"_s, u"engine.notstarted"_s}));
    EXPECT_TRUE(log.contains(u"Backend beendet mit Code: 3"_s));
    EXPECT_EQ(lines().last(), u"❌ Backend-Prozess nicht gefunden"_s);
    EXPECT_EQ(posted, QList<bool>{false}) << "this state is not told";
    EXPECT_FALSE(engine().isRunning());
}

TEST_F(TranslationEngineWatch, aCrashReportsTheSignalsNumberAndEndsTheWatching) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitUntil([this] { return posted == QList<bool>{true}; }));
    ::kill(backendPid(), SIGSEGV);
    ASSERT_TRUE(waitForStatus(u"engine.stopped"_s));
    EXPECT_TRUE(log.contains(u"Backend beendet mit Code: 11"_s));
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(posted, (QList<bool>{true, false}));
    const int probes = probe.count;
    letPass(5 * environment().timings.liveness);
    EXPECT_EQ(probe.count, probes) << "the timer is off";
}

TEST_F(TranslationEngineWatch, aTickThatFindsThePortOpenChangesNothing) {
    probe.inUse = true;
    engine().startBackend();
    log.clear();
    ASSERT_TRUE(waitUntil([this] { return probe.count >= 4; }));
    EXPECT_TRUE(lines().isEmpty());
    EXPECT_EQ(posted, QList<bool>{true});
    EXPECT_EQ(status(), u"engine.running"_s);
}

TEST_F(TranslationEngineWatch, aTickThatFindsThePortClosedMeansTerminated) {
    probe.inUse = true;
    engine().startBackend();
    probe.inUse = false;
    ASSERT_TRUE(waitForStatus(u"engine.terminated"_s));
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(posted, (QList<bool>{true, false}));
    const int probes = probe.count;
    letPass(5 * environment().timings.liveness);
    EXPECT_EQ(probe.count, probes) << "the timer is off";
    EXPECT_EQ(posted.size(), 2);
}

TEST_F(TranslationEngineWatch, theTickWatchesThePortAndNotTheProcess) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitForStatus(u"engine.running"_s));
    probe.inUse = false;
    ASSERT_TRUE(waitForStatus(u"engine.terminated"_s));
    EXPECT_TRUE(isAlive(backendPid()));
}

TEST_F(TranslationEngineWatch, aStartAfterThatWaitsForThePortOfTheLivingProcess) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitForStatus(u"engine.running"_s));
    probe.inUse = false;
    ASSERT_TRUE(waitForStatus(u"engine.terminated"_s));
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.starting"_s);
    probe.inUse = true;
    EXPECT_TRUE(waitForStatus(u"engine.running"_s));
}

TEST_F(TranslationEngineWatch, aLookThatBringsNoAnswerChangesNothing) {
    probe.inUse = true;
    engine().startBackend();
    probe.inUse = std::nullopt;
    const int probes = probe.count;
    ASSERT_TRUE(waitUntil([&] { return probe.count >= probes + 3; }));
    EXPECT_EQ(status(), u"engine.running"_s);
    EXPECT_EQ(posted, QList<bool>{true});
    probe.inUse = false;
    EXPECT_TRUE(waitForStatus(u"engine.terminated"_s));
}

TEST_F(TranslationEngineWatch, doubtsAreLookedIntoBeforeTheNextTick) {
    environment().timings.liveness = 1h;
    environment().timings.doubt = 5ms;
    probe.inUse = true;
    engine().startBackend();
    engine().lookSoon();
    const int probes = probe.count;
    ASSERT_TRUE(waitUntil([&] { return probe.count > probes; }));
    EXPECT_EQ(status(), u"engine.running"_s);
    probe.inUse = false;
    engine().lookSoon();
    EXPECT_TRUE(waitForStatus(u"engine.terminated"_s));
    EXPECT_EQ(posted, (QList<bool>{true, false}));
}

TEST_F(TranslationEngineWatch, anAnswerThatComesAfterANewStartIsVoid) {
    environment().timings.liveness = 5ms;
    probe.holdsLooks = true;
    probe.inUse = true;
    engine().startBackend();
    ASSERT_TRUE(waitUntil([&] { return !probe.heldLooks.isEmpty(); }));
    const auto held = probe.heldLooks; // All of them were made for the first start.
    engine().startBackend();
    for (const auto& answer : held) {
        answer(false);
    }
    EXPECT_EQ(status(), u"engine.running"_s);
    ASSERT_TRUE(waitUntil([&] { return probe.heldLooks.size() > held.size(); }));
    probe.heldLooks.last()(false);
    EXPECT_EQ(status(), u"engine.terminated"_s);
    EXPECT_EQ(posted, (QList<bool>{true, true, false}));
}

TEST_F(TranslationEngineWatch, anAnswerThatComesAfterItsEndWasToldIsVoid) {
    environment().timings.liveness = 5ms;
    probe.holdsLooks = true;
    probe.inUse = true;
    engine().startBackend();
    ASSERT_TRUE(waitUntil([&] { return probe.heldLooks.size() >= 2; }));
    probe.heldLooks.first()(false);
    probe.heldLooks.last()(false);
    EXPECT_EQ(posted, (QList<bool>{true, false}));
    EXPECT_EQ(status(), u"engine.terminated"_s);
}

TEST_F(TranslationEngineWatch, nothingIsSaidToRunAfterItsEndWasTold) {
    installBackend(programs::waitForSignal);
    QObject::connect(&engine(), &TranslationEngine::isRunningChanged, &engine(), [&](bool runs) {
        if (runs) { // Before anybody is told of it.
            ::kill(backendPid(), SIGKILL);
            while (isAlive(backendPid())) {
            }
        }
    });
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitUntil([&] { return posted.contains(false); }));
    drainEvents();
    EXPECT_NE(posted, (QList<bool>{false, true}));
}

TEST_F(TranslationEngineWatch, startingAgainRestartsTheTickInsteadOfAddingOne) {
    environment().timings.liveness = 200ms;
    probe.inUse = true;
    engine().startBackend();
    engine().startBackend();
    engine().startBackend();
    probe.inUse = false;
    ASSERT_TRUE(waitForStatus(u"engine.terminated"_s));
    EXPECT_EQ(probe.count, 4);
    EXPECT_EQ(posted, (QList<bool>{true, true, true, false}));
}

TEST_F(TranslationEngineWatch, publishesItsValuesWhenTheyChange) {
    QStringList published;
    QObject::connect(&engine(), &TranslationEngine::isRunningChanged, &engine(),
                     [&](bool value) { published.append(value ? u"running"_s : u"idle"_s); });
    QObject::connect(&engine(), &TranslationEngine::statusMessageChanged, &engine(),
                     [&](const QString& text) { published.append(text); });
    probe.inUse = true;
    engine().startBackend();
    engine().startBackend();
    probe.inUse = false;
    ASSERT_TRUE(waitForStatus(u"engine.terminated"_s));
    EXPECT_EQ(published,
              (QStringList{u"running"_s, u"engine.running"_s, u"idle"_s, u"engine.terminated"_s}));
}

TEST_F(TranslationEngineWatch, theStatusFollowsTheLanguage) {
    QString language = u"en "_s;
    environment().text = [&](const QString& key) { return language + key; };
    QStringList published;
    QObject::connect(&engine(), &TranslationEngine::statusMessageChanged, &engine(),
                     [&](const QString& text) { published.append(text); });
    EXPECT_EQ(status(), u"en engine.stopped"_s);
    language = u"de "_s;
    engine().retranslate();
    EXPECT_EQ(status(), u"de engine.stopped"_s);
    EXPECT_EQ(published, QStringList{u"de engine.stopped"_s});
}

TEST(BackendTimings, areThoseOfTheRealBackend) {
    const BackendTimings timings;
    EXPECT_EQ(timings.modelLoading, 6s);
    EXPECT_EQ(timings.portRecheck, 2s);
    EXPECT_EQ(timings.liveness, 10s);
    EXPECT_EQ(timings.stopPause, 1s);
}

} // namespace orv::test
