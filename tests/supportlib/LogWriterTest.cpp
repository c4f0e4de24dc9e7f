#include "LogWriter.h"
#include "FewFiles.h"
#include "ForkedChild.h"
#include "Log.h"
#include "StandardOutput.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

using test::FewFiles;
using test::Pipe;
using test::signalThatEnded;
using test::StandardOutput;
using test::statusOfForked;

namespace {

/// How many of the lines "line 0", "line 1" … stand at the beginning of `lines`.
qsizetype numberedLines(const QList<QByteArray>& lines) {
    qsizetype count = 0;
    while (count < lines.size() && lines[count] == "line " + QByteArray::number(count)) {
        ++count;
    }
    return count;
}

void logNumbered(int count) {
    for (int number = 0; number < count; ++number) {
        logLine(u"line "_s + QString::number(number));
    }
}

const QByteArray leftOutEnd = " Zeilen ausgelassen\n";

} // namespace

TEST(LogWriter, aReaderWhoPausesHoldsUpNobodyAndIsToldWhatIsMissing) {
    constexpr int count = 100000;
    const Pipe pipe;
    const StandardOutput output(pipe.writer());
    const LogWriter writer;
    // Nobody reads: with a line that waits, this would never end.
    logNumbered(count);
    QList<QByteArray> lines = pipe.read(leftOutEnd).split('\n');
    const qsizetype written = numberedLines(lines);
    EXPECT_GT(written, 10000);
    ASSERT_EQ(lines.size(), written + 2);
    EXPECT_EQ(lines[written],
              u"⚠️ Ausgabe wurde nicht gelesen - %1 Zeilen ausgelassen"_s.arg(count - written)
                  .toUtf8());
    logLine(u"and on");
    EXPECT_EQ(pipe.read("on\n"), QByteArray("and on\n"));
}

TEST(LogWriter, writesEverythingBeforeItEnds) {
    Pipe pipe;
    QByteArray bytes;
    std::thread reader([&] { bytes = pipe.read(); });
    {
        const StandardOutput output(pipe.writer());
        pipe.closeWriter();
        const LogWriter writer(
            {.room = std::size_t{16} << 20U, .patienceAtEnd = std::chrono::hours(1)});
        logNumbered(50000);
    }
    reader.join();
    EXPECT_EQ(numberedLines(bytes.split('\n')), 50000);
}

TEST(LogWriter, linesFromSeveralThreadsStayWhole) {
    constexpr int threads = 4;
    constexpr int linesEach = 300;
    const auto text = [](int thread) { return QString(9000, QChar(u'a' + thread)); };
    Pipe pipe;
    QByteArray bytes;
    std::thread reader([&] { bytes = pipe.read(); });
    {
        const StandardOutput output(pipe.writer());
        pipe.closeWriter();
        const LogWriter writer(
            {.room = std::size_t{64} << 20U, .patienceAtEnd = std::chrono::hours(1)});
        std::vector<std::thread> writers;
        writers.reserve(threads);
        for (int thread = 0; thread < threads; ++thread) {
            writers.emplace_back([&, thread] {
                for (int line = 0; line < linesEach; ++line) {
                    logLine(text(thread));
                }
            });
        }
        for (std::thread& one : writers) {
            one.join();
        }
    }
    reader.join();
    std::array<int, threads> counts = {};
    QList<QByteArray> lines = bytes.split('\n');
    EXPECT_TRUE(lines.takeLast().isEmpty());
    for (const QByteArray& line : lines) {
        const int thread = line.isEmpty() ? -1 : line.front() - 'a';
        ASSERT_TRUE(thread >= 0 && thread < threads);
        ASSERT_EQ(line, text(thread).toUtf8());
        ++counts.at(static_cast<std::size_t>(thread));
    }
    EXPECT_EQ(counts, (std::array<int, threads>{linesEach, linesEach, linesEach, linesEach}));
}

TEST(LogWriter, aReaderWhoReadsNothingDelaysTheEndNoLongerThanAllowed) {
    Pipe pipe;
    {
        const StandardOutput output(pipe.writer());
        {
            const LogWriter writer({.room = std::size_t{1} << 20U, .patienceAtEnd = 20ms});
            logLine(QString(300000, u'x'));
        }
        ::fcntl(pipe.reader(), F_SETFL, O_NONBLOCK);
        const QByteArray bytes = pipe.read();
        EXPECT_EQ(bytes, QByteArray(bytes.size(), 'x'));
        logLine(u"later");
    }
    EXPECT_EQ(pipe.read(), QByteArray("\nlater\n")) << "not in the middle of the broken line";
}

#if ORV_MAY_LACK_FILES

TEST(LogWriter, writesAndEndsAlsoWhereNobodyCanWakeIt) {
    const Pipe pipe;
    const StandardOutput output(pipe.writer());
    std::optional<FewFiles> none(0);
    {
        const LogWriter writer({.room = 1000, .patienceAtEnd = std::chrono::hours(1)});
        none.reset();
        logLine(u"one");
        EXPECT_EQ(pipe.read("one\n"), QByteArray("one\n"));
        logLine(u"two");
        EXPECT_EQ(pipe.read("two\n"), QByteArray("two\n"));
        logLine(u"last");
    }
    EXPECT_EQ(pipe.read("last\n"), QByteArray("last\n"));
}

#endif

TEST(LogWriter, linesAfterItsEndAreWrittenAtOnce) {
    const Pipe pipe;
    const StandardOutput output(pipe.writer());
    {
        const LogWriter writer;
        logLine(u"with");
    }
    logLine(u"without");
    EXPECT_EQ(pipe.read("without\n"), QByteArray("with\nwithout\n"));
}

TEST(LogWriter, anOutputThatNobodyReadsAnyMoreIsIgnored) {
    const auto handler = ::signal(SIGPIPE, SIG_DFL);
    {
        Pipe pipe;
        const StandardOutput output(pipe.writer());
        const LogWriter writer({.room = 1000, .patienceAtEnd = std::chrono::hours(1)});
        logLine(u"heard");
        EXPECT_EQ(pipe.read("\n"), QByteArray("heard\n"));
        pipe.closeReader();
        logNumbered(1000);
    }
    EXPECT_EQ(::signal(SIGPIPE, handler), SIG_DFL);
}

TEST(LogWriter, aClosedStandardOutputIsIgnored) {
    const StandardOutput output(STDOUT_FILENO);
    ::close(STDOUT_FILENO);
    const LogWriter writer({.room = 1000, .patienceAtEnd = std::chrono::hours(1)});
    logLine(u"nobody hears");
}

TEST(LogWriter, aSinkIsCalledOnTheThreadThatLogs) {
    const LogWriter writer;
    std::thread::id thread;
    const LogSink earlier =
        setLogSink([&](const QString&) { thread = std::this_thread::get_id(); });
    logLine(u"to the sink");
    setLogSink(earlier);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(LogWriter, theLastLinesBeforeACrashAreWritten) {
    Pipe pipe;
    const int status = statusOfForked([&] {
        const StandardOutput output(pipe.writer());
        const LogWriter writer;
        logNumbered(1000);
        std::abort();
    });
    EXPECT_EQ(signalThatEnded(status), SIGABRT);
    pipe.closeWriter();
    EXPECT_EQ(numberedLines(pipe.read().split('\n')), 1000);
}

TEST(LogWriter, theLastLinesBeforeAnExitAreWritten) {
    Pipe pipe;
    const int status = statusOfForked([&] {
        const StandardOutput output(pipe.writer());
        const LogWriter writer;
        logNumbered(1000);
        std::exit(0); // NOLINT(concurrency-mt-unsafe): the other thread is the one to be ended.
    });
    EXPECT_EQ(status, 0);
    pipe.closeWriter();
    EXPECT_EQ(numberedLines(pipe.read().split('\n')), 1000);
}

TEST(LogWriter, aForkedChildWritesItsLinesItself) {
    Pipe pipe;
    {
        const StandardOutput output(pipe.writer());
        const LogWriter writer;
        EXPECT_EQ(statusOfForked([] { logLine(u"child"); }), 0);
        logLine(u"parent");
    }
    pipe.closeWriter();
    EXPECT_EQ(pipe.read(), QByteArray("child\nparent\n"));
}

} // namespace orv
