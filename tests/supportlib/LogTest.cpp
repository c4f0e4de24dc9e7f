#include "Log.h"
#include "StandardOutput.h"

#include <QByteArray>
#include <QList>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {

using test::Pipe;
using test::StandardOutput;

namespace {

/// What `write` makes the log print into a pipe.
QByteArray printed(const std::function<void()>& write, int flags = 0) {
    Pipe pipe(flags);
    ::fcntl(pipe.reader(), F_SETFL, 0);
    QByteArray bytes;
    std::thread reader([&] { bytes = pipe.read(); });
    {
        const StandardOutput output(pipe.writer());
        pipe.closeWriter();
        write();
    }
    reader.join();
    return bytes;
}

} // namespace

TEST(Log, printsALineInUtf8) {
    EXPECT_EQ(printed([] { logLine(u"✓ läuft"); }), u"✓ läuft\n"_s.toUtf8());
}

TEST(Log, keepsLineBreaksAndEmptyLines) {
    EXPECT_EQ(printed([] {
                  logLine(u"a\nb");
                  logLine(u"");
              }),
              QByteArray("a\nb\n\n"));
}

TEST(Log, writesALineWithOneCall) {
    // A datagram socket keeps the borders between calls.
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends.data()), 0);
    {
        const StandardOutput output(ends[1]);
        logLine(u"one");
        logLine(u"two");
    }
    std::array<char, 16> bytes = {};
    EXPECT_EQ(::recv(ends[0], bytes.data(), bytes.size(), 0), 4);
    EXPECT_EQ(QByteArray(bytes.data(), 4), QByteArray("one\n"));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(Log, linesFromSeveralThreadsStayWhole) {
    constexpr int threads = 4;
    constexpr int linesEach = 300;
    // Longer than what a pipe takes in one piece.
    const auto text = [](int thread) { return QString(9000, QChar(u'a' + thread)); };
    const QByteArray bytes = printed([&] {
        std::vector<std::thread> writers;
        writers.reserve(threads);
        for (int thread = 0; thread < threads; ++thread) {
            writers.emplace_back([&, thread] {
                for (int line = 0; line < linesEach; ++line) {
                    logLine(text(thread));
                }
            });
        }
        for (std::thread& writer : writers) {
            writer.join();
        }
    });
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

TEST(Log, waitsForAnOutputThatIsFull) {
    const QString line(300000, u'x');
    EXPECT_EQ(printed([&] { logLine(line); }, O_NONBLOCK), line.toUtf8() + '\n');
}

TEST(Log, waitsOnceForAReaderWhoReadsNothing) {
    const Pipe pipe;
    const QString line(300000, u'x');
    {
        const StandardOutput output(pipe.writer());
        for (int i = 0; i < 1000; ++i) {
            logLine(line);
        }
    }
    EXPECT_TRUE(pipe.read(QByteArray(4096, 'x')).startsWith("xxx"));
}

TEST(Log, aLineAfterABrokenOneBeginsAnew) {
    Pipe pipe;
    QByteArray bytes;
    {
        const StandardOutput output(pipe.writer());
        logLine(QString(300000, u'x'));
        ::fcntl(pipe.reader(), F_SETFL, O_NONBLOCK);
        bytes = pipe.read();
        logLine(u"whole");
    }
    EXPECT_EQ(bytes, QByteArray(bytes.size(), 'x'));
    EXPECT_EQ(pipe.read(), QByteArray("\nwhole\n"));
}

TEST(Log, aClosedStandardOutputIsIgnored) {
    const StandardOutput output(STDOUT_FILENO);
    ::close(STDOUT_FILENO);
    logLine(u"nobody hears");
}

TEST(Log, anOutputThatNobodyReadsAnyMoreDoesNotEndTheProgram) {
    const auto handler = ::signal(SIGPIPE, SIG_DFL);
    {
        Pipe pipe;
        pipe.closeReader();
        const StandardOutput output(pipe.writer());
        logLine(u"nobody hears");
    }
    sigset_t pending = {};
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0) << "the signal does not come later either";
    EXPECT_EQ(::signal(SIGPIPE, handler), SIG_DFL) << "the program's choice is left alone";
}

TEST(Log, aSinkTakesThePlaceOfStandardOutput) {
    QStringList lines;
    const QByteArray bytes = printed([&] {
        const LogSink earlier = setLogSink([&](const QString& line) { lines.append(line); });
        logLine(u"to the sink");
        setLogSink(earlier);
        logLine(u"to the output");
    });
    EXPECT_EQ(lines, QStringList{u"to the sink"_s});
    EXPECT_EQ(bytes, QByteArray("to the output\n"));
}

TEST(Log, aSinkMayLogOrReplaceItself) {
    QStringList lines;
    const LogSink earlier = setLogSink([&](const QString& line) {
        lines.append(line);
        setLogSink([&](const QString& later) { lines.append(u"later "_s + later); });
        logLine(u"inner");
    });
    logLine(u"outer");
    setLogSink(earlier);
    EXPECT_EQ(lines, (QStringList{u"outer"_s, u"later inner"_s}));
}

TEST(Log, boolTextSaysTrueOrFalse) {
    EXPECT_EQ(boolText(true), u"true"_s);
    EXPECT_EQ(boolText(false), u"false"_s);
}

} // namespace orv
