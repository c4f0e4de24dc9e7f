#include "BackendFixture.h"
#include "BackendLog.h"
#include "ProcessTable.h"
#include "SerialQueue.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <csignal>
#include <future>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

/// What remains of what a backend says.
class TranslationEngineLog : public BackendFixture {
  protected:
    TranslationEngineLog() {
        environment().text = [](const QString& key) {
            return key == u"engine.lastwords" ? u"last: %1"_s : key;
        };
        environment().timings.modelLoading = 20s; // Nobody looks at the port before.
        openLog({});
    }

    ~TranslationEngineLog() override { goOn(); }

    void openLog(const BackendLog::Limits& limits, qint64 mostBytes = BackendLogFile::mostBytes) {
        backendLog_ = std::make_unique<BackendLog>(
            *disk_, BackendLogFile(path, path + u".1"_s, mostBytes), limits);
        environment().log = backendLog_.get();
    }

    /// A disk that does nothing until `goOn`.
    void holdDisk() {
        isHeld_ = true;
        disk_->post([gate = gate_.get_future().share()] { gate.wait(); });
    }

    void goOn() {
        if (std::exchange(isHeld_, false)) {
            gate_.set_value();
        }
    }

    /// The supervisor is gone, and everything is written.
    void finish() {
        destroyEngine();
        backendLog_.reset();
        disk_.reset();
    }

    QByteArray content() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    bool waitForEnd(int status) const {
        return waitUntil(
            [&] { return log.contains(u"Backend beendet mit Code: %1"_s.arg(status)); });
    }

    /// What the log says of the last lines of a backend that did not start.
    QStringList lastLines() const {
        const QStringList told = linesWith({u"❌ Das Backend endete beim Start"_s});
        return told.isEmpty() ? QStringList() : told.last().split(u"\n    "_s).mid(1);
    }

    const QString path = home() + u"/Library/Application Support/Orvane/backend.log"_s;

  private:
    std::promise<void> gate_;
    bool isHeld_ = false;
    std::unique_ptr<SerialQueue> disk_ = std::make_unique<SerialQueue>(u"test.disk"_s);
    std::unique_ptr<BackendLog> backendLog_;
};

TEST_F(TranslationEngineLog, holdsWhatStartsWhenAndWhatItSays) {
    installBackend(u"say('läuft')\nsys.stderr.write('Fehler\\n')\n"_s);
    engine().startBackend();
    ASSERT_TRUE(waitForEnd(0));
    finish();
    const QString heading = u"^=== [0-9-]{10} [0-9:]{8} UTC - Start: "_s;
    const QString command = environment().interpreter + u' ' + environment().script;
    const QRegularExpression expected(heading + QRegularExpression::escape(command) +
                                      u"\nläuft\nFehler\n$"_s);
    EXPECT_TRUE(expected.match(QString::fromUtf8(content())).hasMatch()) << content().constData();
}

TEST_F(TranslationEngineLog, holdsWhatTheInstallerSays) {
    offerInstaller(u"echo '==> [1/3] Looking'; echo 'error: The disk is full.' >&2; exit 3"_s);
    engine().startBackend();
    dialogs.choose(0);
    ASSERT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    finish();
    EXPECT_TRUE(content().endsWith("/install\n==> [1/3] Looking\nerror: The disk is full.\n"))
        << content().constData();
}

TEST_F(TranslationEngineLog, aBackendThatDoesNotStartTellsItsLastLines) {
    installBackend(u"for number in range(30): say('line %d' % number)\n"
                   "raise RuntimeError('No such model')\n"_s);
    QStringList shown;
    const QObject watcher; // The engine outlives the list, and forgets the words at its end.
    QObject::connect(&engine(), &TranslationEngine::statusDetailChanged, &watcher,
                     [&](const QString& text) { shown.append(text); });
    engine().startBackend();
    ASSERT_TRUE(waitForEnd(1));
    EXPECT_EQ(engine().statusDetail(), u"last: RuntimeError: No such model"_s);
    EXPECT_EQ(shown, QStringList{u"last: RuntimeError: No such model"_s});
    EXPECT_EQ(status(), u"engine.stopped"_s) << "the status itself stays what it was";
    ASSERT_EQ(lastLines().size(), 10);
    EXPECT_TRUE(lastLines().contains(u"line 29"_s));
    EXPECT_EQ(lastLines().last(), u"RuntimeError: No such model"_s);
}

TEST_F(TranslationEngineLog, theNextStartForgetsThem) {
    installBackend(u"if os.path.exists(home + '/works'):\n"
                   "    say('ready')\n"
                   "    signal.pause()\n"
                   "say('No module')\n"_s);
    engine().startBackend();
    ASSERT_TRUE(waitForEnd(0));
    EXPECT_EQ(engine().statusDetail(), u"last: No module"_s);
    writeHomeFile(u"works"_s, {});
    ASSERT_TRUE(startAndWaitUntilReady());
    EXPECT_EQ(engine().statusDetail(), QString());
}

TEST_F(TranslationEngineLog, aBackendThatSaidNothingHasNoLastLines) {
    installBackend(u"sys.exit(3)"_s);
    engine().startBackend();
    ASSERT_TRUE(waitForEnd(3));
    EXPECT_EQ(engine().statusDetail(), QString());
    EXPECT_TRUE(lastLines().isEmpty());
}

TEST_F(TranslationEngineLog, aBackendThatWasStoppedHasNotFailed) {
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    engine().stopBackend();
    ASSERT_TRUE(waitForEnd(15));
    EXPECT_EQ(engine().statusDetail(), QString());
    EXPECT_TRUE(lastLines().isEmpty());
}

TEST_F(TranslationEngineLog, aBackendThatHasRunHasStarted) {
    environment().timings.modelLoading = 30ms;
    installBackend(programs::waitForSignal);
    ASSERT_TRUE(startAndWaitUntilReady());
    probe.inUse = true;
    ASSERT_TRUE(waitUntil([this] { return status() == u"engine.running"; }));
    ::kill(backendPid(), SIGKILL);
    ASSERT_TRUE(waitForEnd(9));
    EXPECT_EQ(engine().statusDetail(), QString());
    EXPECT_TRUE(lastLines().isEmpty());
}

TEST_F(TranslationEngineLog, aProgramThatCannotBeRunTellsWhy) {
    installBackend(programs::waitForSignal);
    QFile::remove(environment().interpreter);
    QFile notExecutable(environment().interpreter);
    ASSERT_TRUE(notExecutable.open(QIODevice::WriteOnly));
    notExecutable.close();
    engine().startBackend();
    EXPECT_EQ(status(), u"engine.failed"_s);
    EXPECT_EQ(engine().statusDetail(), u"last: Permission denied"_s);
}

TEST_F(TranslationEngineLog, aFloodHoldsNobodyUpWhileTheDiskIsHeldUp) {
    openLog({.backlog = 65536});
    installBackend(u"for _ in range(4000): say('x' * 999)\n"
                   "with open(home + '/part', 'w') as file: file.write('yes')\n"
                   "os.rename(home + '/part', home + '/said')\n"
                   "while True: signal.pause()\n"_s);
    holdDisk();
    engine().startBackend();
    ASSERT_TRUE(waitUntil([this] { return readHomeFile(u"said"_s) == u"yes"; }));
    destroyEngine(); // With it goes the thread that reads: everything has been read.
    EXPECT_FALSE(QFile::exists(path));
    goOn();
    finish();
    const QByteArray all = content();
    EXPECT_LT(all.size(), 65536 + 200);
    const auto marker = QRegularExpression(u"\n⚠️.* - ([0-9]+) Bytes ausgelassen\n$"_s)
                            .match(QString::fromUtf8(all));
    ASSERT_TRUE(marker.hasMatch()) << all.last(200).constData();
    const QByteArray said = all.mid(all.indexOf('\n') + 1);
    const qsizetype kept = said.size() - marker.captured().toUtf8().size();
    // The line feed before the marker may be the server's own.
    EXPECT_NEAR(static_cast<double>(kept + marker.captured(1).toInt()), 4000000, 1);
}

TEST_F(TranslationEngineLog, aFloodLeavesTwoFilesOfLimitedSize) {
    openLog({}, 65536);
    installBackend(u"for number in range(4000): say('%d ' % number + 'x' * 999)\n"_s);
    engine().startBackend();
    ASSERT_TRUE(waitForEnd(0));
    finish();
    const QDir folder(QFileInfo(path).path());
    EXPECT_EQ(folder.entryList({u"backend.log*"_s}, QDir::Files),
              (QStringList{u"backend.log"_s, u"backend.log.1"_s}));
    EXPECT_LE(QFileInfo(path).size(), 65536);
    EXPECT_LE(QFileInfo(path + u".1"_s).size(), 65536);
}

TEST_F(TranslationEngineLog, anAdoptedBackendLeavesTheFileOfAnEarlierStartAsItIs) {
    installBackend(programs::waitForSignal);
    writeHomeFile(u"Library/Application Support/Orvane/backend.log"_s, u"of an earlier start"_s);
    probe.inUse = true;
    engine().startBackend();
    ASSERT_TRUE(waitUntil([this] { return probe.count >= 3; }));
    engine().leaveRunning();
    finish();
    EXPECT_EQ(content(), "of an earlier start");
}

TEST_F(TranslationEngineLog, whatABackendSaysThatWasLeftRunningGoesNowhere) {
    installBackend(u"say('ready')\n"
                   "while not os.path.exists(home + '/go'): time.sleep(0.005)\n"
                   "for _ in range(3000): say('x' * 99)\n"
                   "with open(home + '/survived', 'w') as file: file.write('yes')\n"
                   "while True: signal.pause()\n"_s);
    ASSERT_TRUE(startAndWaitUntilReady());
    ASSERT_TRUE(waitUntil([this] { return content().endsWith("\nready\n"); }));
    engine().leaveRunning();
    finish();
    const QByteArray before = content();
    EXPECT_TRUE(before.endsWith("\nready\n"));
    writeHomeFile(u"go"_s, {});
    EXPECT_TRUE(waitUntil([this] { return readHomeFile(u"survived"_s) == u"yes"; }));
    EXPECT_EQ(content(), before);
    ::kill(backendPid(), SIGKILL);
}

} // namespace orv::test
