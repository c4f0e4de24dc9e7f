#include "Log.h"
#include "LogCapture.h"

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

namespace {

/// Puts a descriptor in the place of standard output while it lives.
class StandardOutput {
  public:
    explicit StandardOutput(int replacement)
        : saved_(::dup(STDOUT_FILENO)) {
        ::dup2(replacement, STDOUT_FILENO);
    }

    ~StandardOutput() {
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
    }

    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

  private:
    int saved_;
};

QByteArray readAll(int descriptor) {
    QByteArray all;
    std::array<char, 4096> piece = {};
    for (;;) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count <= 0) {
            return all;
        }
        all.append(piece.data(), static_cast<qsizetype>(count));
    }
}

/// What `write` makes the log print into a pipe.
QByteArray printed(const std::function<void()>& write, int flags = 0) {
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), flags), 0);
    ::fcntl(ends[0], F_SETFL, 0);
    QByteArray bytes;
    std::thread reader([&] { bytes = readAll(ends[0]); });
    {
        const StandardOutput output(ends[1]);
        ::close(ends[1]);
        write();
    }
    reader.join();
    ::close(ends[0]);
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

TEST(Log, aClosedStandardOutputIsIgnored) {
    const StandardOutput output(STDOUT_FILENO);
    ::close(STDOUT_FILENO);
    logLine(u"nobody hears");
}

TEST(Log, anOutputThatNobodyReadsAnyMoreDoesNotEndTheProgram) {
    const auto handler = ::signal(SIGPIPE, SIG_DFL);
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(::pipe(ends.data()), 0);
    ::close(ends[0]);
    {
        const StandardOutput output(ends[1]);
        logLine(u"nobody hears");
    }
    ::close(ends[1]);
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
