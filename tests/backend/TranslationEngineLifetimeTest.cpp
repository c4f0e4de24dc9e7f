#include "BackendFixture.h"
#include "ProcessTable.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

/// Who outlives whom.
class TranslationEngineLifetime : public BackendFixture {
  protected:
    TranslationEngineLifetime() { environment().timings.modelLoading = 20s; }

    /// Prints more than a pipe holds once the file "go" is there, then says so in a file.
    const QString talkative = uR"(
say('ready')
while not os.path.exists(home + '/go'): time.sleep(0.005)
for _ in range(3000): say('x' * 99)
with open(home + '/survived', 'w') as file: file.write('yes')
while True: signal.pause()
)"_s;

    bool goesOnAndEnds(pid_t pid) {
        if (!isAlive(pid)) {
            return false;
        }
        writeHomeFile(u"go"_s, {});
        const bool survived = waitUntil([this] { return readHomeFile(u"survived"_s) == u"yes"_s; });
        ::kill(pid, SIGKILL);
        return survived;
    }
};

TEST_F(TranslationEngineLifetime, destroyingItEndsTheBackend) {
    installBackend(programs::waitForSignal);
    environment().timings.stopPause = 10s;
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
    EXPECT_EQ(linesWith({u"🛑"_s, u"⚠️"_s}), QStringList{u"🛑 Stoppe Backend..."_s});
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineLifetime, destroyingItEndsABackendThatObeysNothing) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
    EXPECT_EQ(linesWith({u"🛑"_s, u"⚠️"_s}),
              (QStringList{u"🛑 Stoppe Backend..."_s,
                           u"⚠️ Backend reagiert nicht auf SIGTERM, sende SIGINT..."_s,
                           u"⚠️ Backend reagiert nicht, sende SIGKILL..."_s}));
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineLifetime, destroyingItWhileItStopsEndsTheBackend) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().stopBackend();
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
    letPass(4 * environment().timings.stopPause);
    EXPECT_FALSE(log.contains(u"✓ Backend gestoppt"_s)) << "no delayed step is left";
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineLifetime, destroyingItGoesOnWhereAStopIs) {
    installBackend(programs::ignoresTermAndInt);
    environment().timings.stopPause = 500ms;
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().stopBackend();
    const QString interrupting = u"⚠️ Backend reagiert nicht auf SIGTERM, sende SIGINT..."_s;
    ASSERT_TRUE(waitUntil([&] { return log.contains(interrupting); }));
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
    EXPECT_EQ(log.count(interrupting), 1) << "what has been sent is not waited for anew";
    EXPECT_EQ(log.count(u"⚠️ Backend reagiert nicht, sende SIGKILL..."_s), 1);
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineLifetime, destroyingItRightAfterTheKillLeavesNothingBehind) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    QObject::connect(&engine(), &TranslationEngine::BackendStatusChanged, &engine(), [&] {
        // Still within the step that killed it: ends the loop below.
        writeHomeFile(u"stopped"_s, u"yes"_s);
    });
    engine().stopBackend();
    ASSERT_TRUE(waitUntil([this] { return !posted.isEmpty(); }));
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
    EXPECT_EQ(childCount(), 0);
}

TEST_F(TranslationEngineLifetime, delayedLooksAtThePortEndWithIt) {
    installBackend(programs::waitForSignal);
    environment().timings.modelLoading = 30ms;
    engine().startBackend();
    destroyEngine();
    const int probes = probe.count;
    letPass(150ms);
    EXPECT_EQ(probe.count, probes);
}

TEST_F(TranslationEngineLifetime, leavesNoProcessAndNoDescriptorBehind) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    destroyEngine();
    const int descriptors = descriptorCount();
    for (int round = 0; round < 3; ++round) {
        log.clear();
        ASSERT_TRUE(startAndWaitUntilReady());
        engine().stopBackend();
        ASSERT_TRUE(waitUntil([this] { return log.contains(u"✓ Backend gestoppt"_s); }));
        // Once its end has been told, before the last step or after it, nothing is left of it.
        ASSERT_TRUE(
            waitUntil([this] { return log.containsStart(u"Backend beendet mit Code: "_s); }));
        EXPECT_EQ(childCount(), 0);
    }
    destroyEngine();
    EXPECT_EQ(descriptorCount(), descriptors);
}

TEST_F(TranslationEngineLifetime, aBackendLeftRunningGoesOnAndCanGoOnPrinting) {
    installBackend(talkative);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().leaveRunning();
    destroyEngine();
    EXPECT_TRUE(linesWith({u"🛑"_s, u"läuft nicht"_s}).isEmpty());
    EXPECT_TRUE(goesOnAndEnds(pid));
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; })) << "nobody watches any longer";
}

TEST_F(TranslationEngineLifetime, aBackendThatIsBeingStoppedIsNotLeftRunning) {
    installBackend(programs::ignoresTermAndInt);
    ASSERT_TRUE(startAndWaitUntilReady());
    const pid_t pid = backendPid();
    engine().stopBackend();
    engine().leaveRunning();
    destroyEngine();
    EXPECT_FALSE(isAlive(pid));
}

TEST_F(TranslationEngineLifetime, leavingAnAdoptedBackendRunningDoesNothing) {
    probe.inUse = true;
    engine().startBackend();
    log.clear();
    engine().leaveRunning();
    destroyEngine();
    EXPECT_TRUE(lines().isEmpty());
}

/// A program of its own with a supervisor, killed without a chance to clean up.
class KilledProgram : public TranslationEngineLifetime {
  protected:
    /// Runs the program with the test's home until its backend is ready and it has obeyed
    /// `commands`, then kills it.
    void runAndKill(const QString& mode, const QByteArray& commands = {}) {
        QProcess program;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        variables.insert(u"HOME"_s, home());
        program.setProcessEnvironment(variables);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QByteArray output;
        QObject::connect(&program, &QProcess::readyRead, &program,
                         [&] { output += program.readAll(); });
        program.start(QString::fromUtf8(ORVANE_BACKEND_DRIVER), {mode});
        ASSERT_TRUE(waitUntil([&] { return output.contains("Backend:ready\n"); }))
            << output.constData();
        ASSERT_TRUE(isAlive(backendPid()));
        EXPECT_EQ(aliveInGroup(backendPid()), 2);
        program.write(commands);
        ASSERT_TRUE(waitUntil([&] {
            return output.count("driver has obeyed\n") == commands.size();
        })) << output.constData();
        program.kill();
        ASSERT_TRUE(program.waitForFinished());
    }
};

TEST_F(KilledProgram, takesItsBackendAlong) {
    installBackend(programs::waitForSignal);
    runAndKill(u"end"_s);
    const pid_t pid = backendPid();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; })) << "nobody watches any longer";
}

TEST_F(KilledProgram, takesAStubbornBackendAlong) {
    installBackend(programs::ignoresTermAndInt);
    runAndKill(u"end"_s);
    const pid_t pid = backendPid();
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; }));
}

TEST_F(KilledProgram, leavesABackendThatMayStay) {
    installBackend(talkative);
    runAndKill(u"keep"_s);
    const pid_t pid = backendPid();
    EXPECT_TRUE(goesOnAndEnds(pid));
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; })) << "nobody watches any longer";
}

TEST_F(KilledProgram, takesABackendAlongThatMayNoLongerStay) {
    installBackend(programs::waitForSignal);
    runAndKill(u"keep"_s, "e");
    const pid_t pid = backendPid();
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; }));
}

TEST_F(KilledProgram, takesABackendAlongThatItWasStopping) {
    installBackend(programs::ignoresTermAndInt);
    runAndKill(u"keep"_s, "s");
    const pid_t pid = backendPid();
    EXPECT_TRUE(waitUntil([&] { return aliveInGroup(pid) == 0; }));
}

} // namespace orv::test
