// Kills a writing process at random moments and looks at what is on the disk. The number of rounds
// and the seed can be set by the environment variables ORVANE_TORTURE_ROUNDS and
// ORVANE_TORTURE_SEED.

#include "DefaultsStore.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "TortureSteps.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

extern char** environ;

namespace orv::test {

namespace {

using Clock = std::chrono::steady_clock;

/// The writing process and what it reports.
class Writer {
  public:
    Writer(const QString& file, const char* mode) {
        int ends[2] = {};
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        reports_ = ends[0];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        QByteArray program =
            QFile::encodeName(QCoreApplication::applicationDirPath() + u"/orvane_torture_writer");
        QByteArray path = QFile::encodeName(file);
        QByteArray modeText(mode);
        char* arguments[] = {program.data(), path.data(), modeText.data(), nullptr};
        EXPECT_EQ(
            ::posix_spawn(&process_, program.constData(), &actions, nullptr, arguments, environ),
            0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
    }

    ~Writer() {
        kill();
        ::close(reports_);
    }

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Reads reports until `count` have come or `deadline` is reached. False at the end of the
    /// reports.
    bool listen(int count, Clock::time_point deadline) {
        while (count > 0 && Clock::now() < deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            pollfd wanted = {reports_, POLLIN, 0};
            if (::poll(&wanted, 1, static_cast<int>(left.count())) <= 0) {
                continue;
            }
            const int lines = readReports();
            if (lines < 0) {
                return false;
            }
            count -= lines;
        }
        return true;
    }

    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(std::exchange(process_, -1), nullptr, 0);
        }
    }

    /// The last step that was reported as written.
    std::int64_t reported() const { return reported_; }

  private:
    /// The number of whole lines that came with one read, -1 at the end.
    int readReports() {
        char buffer[4096];
        const ssize_t length = ::read(reports_, buffer, sizeof buffer);
        if (length <= 0) {
            return -1;
        }
        pending_.append(buffer, length);
        int lines = 0;
        for (qsizetype end = pending_.indexOf('\n'); end >= 0; end = pending_.indexOf('\n')) {
            bool isStep = false;
            reported_ = std::max<std::int64_t>(reported_, pending_.left(end).toLongLong(&isStep));
            // Anything else is a line of the store's, and it has nothing to complain about.
            EXPECT_TRUE(isStep) << pending_.left(end).toStdString();
            pending_.remove(0, end + 1);
            ++lines;
        }
        return lines;
    }

    int reports_ = -1;
    pid_t process_ = -1;
    QByteArray pending_;
    std::int64_t reported_ = 0;
};

class DefaultsTortureTest : public ::testing::Test {
  protected:
    QString file() const { return home_.filePath(u"defaults.json"_s); }

    QStringList temporaryFiles() const {
        return QDir(home_.path()).entryList({u"*.tmp"_s}, QDir::Files | QDir::Hidden);
    }

    /// The file is whole and holds every step up to the reported one. Gives its last step.
    std::int64_t checkFile(std::int64_t reported) const {
        QFile reader(file());
        if (!reader.open(QIODevice::ReadOnly)) {
            EXPECT_EQ(reported, 0) << "the file is gone";
            return 0;
        }
        const QByteArray content = reader.readAll();
        const QJsonDocument document = QJsonDocument::fromJson(content);
        EXPECT_TRUE(document.isObject()) << content.left(200).toStdString();
        const QJsonObject values = document.object();
        const std::int64_t last = values.value(u"last"_s).toInteger();
        EXPECT_GE(last, reported) << "a step reported as written is lost";
        for (std::int64_t step = std::max<std::int64_t>(1, last - tortureKeys + 2); step <= last;
             ++step) {
            EXPECT_EQ(values.value(tortureKey(step)).toString(), tortureText(step));
        }
        // The oldest of the keys may already carry the step that had begun.
        const QString oldest = values.value(tortureKey(last + 1)).toString();
        EXPECT_TRUE(oldest == tortureText(last + 1) ||
                    (last < tortureKeys ? oldest.isEmpty()
                                        : oldest == tortureText(last + 1 - tortureKeys)));
        return last;
    }

    const QTemporaryDir home_;
    SerialQueue disk_{u"test.disk"_s};
};

unsigned numberFromEnvironment(const char* name, unsigned fallback) {
    bool isNumber = false;
    const unsigned number = qEnvironmentVariable(name).toUInt(&isNumber);
    return isNumber ? number : fallback;
}

} // namespace

TEST_F(DefaultsTortureTest, aKilledWriterLosesNothingItReportedAndLeavesNoDamage) {
    const unsigned rounds = numberFromEnvironment("ORVANE_TORTURE_ROUNDS", 300);
    const unsigned seed = numberFromEnvironment("ORVANE_TORTURE_SEED", 20261120);
    std::mt19937 random(seed);
    const auto upTo = [&random](int most) {
        return std::uniform_int_distribution<int>(0, most)(random);
    };
    unsigned leftovers = 0;
    std::int64_t reported = 0;
    std::int64_t last = 0;
    for (unsigned round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed << ", round " << round);
        Writer writer(file(), upTo(1) == 0 ? "flood" : "wait");
        // Some are killed while they start, most while they write.
        if (upTo(9) > 0) {
            ASSERT_TRUE(writer.listen(1 + upTo(4), Clock::now() + 60s));
        }
        writer.listen(1000000, Clock::now() + std::chrono::microseconds(upTo(5000)));
        writer.kill();
        writer.listen(1000000, Clock::now() + 60s); // What was still in the pipe.
        reported = std::max(reported, writer.reported());
        last = checkFile(reported);
        leftovers += temporaryFiles().isEmpty() ? 0 : 1;

        const LogCapture log;
        const DefaultsStore nextStart(disk_, file());
        EXPECT_EQ(temporaryFiles(), QStringList());
        EXPECT_EQ(nextStart.integer(u"last"_s).value_or(0), last);
        EXPECT_EQ(log.lines(), QStringList());
    }
    RecordProperty("rounds", static_cast<int>(rounds));
    RecordProperty("killedWhileReplacing", static_cast<int>(leftovers));
    std::printf("%u rounds, %lld steps reported as written, %u kills during a replacement\n",
                rounds, static_cast<long long>(reported), leftovers);
    // Otherwise the kills miss what they are meant to hit. How many do not is a matter of chance
    // and of the machine, and a few rounds may all miss it.
    EXPECT_GE(leftovers, std::min(rounds / 50, 1U));
    EXPECT_GT(reported, static_cast<std::int64_t>(rounds));
}

TEST_F(DefaultsTortureTest, aSecondStartBesideAWriterDisturbsNothing) {
    Writer writer(file(), "flood");
    ASSERT_TRUE(writer.listen(1, Clock::now() + 60s));
    const LogCapture log;
    for (int start = 0; start < 200; ++start) {
        const DefaultsStore second(disk_, file());
        EXPECT_GE(second.integer(u"last"_s).value_or(0), writer.reported());
        ASSERT_TRUE(writer.listen(1, Clock::now() + 60s));
    }
    EXPECT_EQ(log.lines(), QStringList());
    writer.kill();
    checkFile(writer.reported());
}

} // namespace orv::test
