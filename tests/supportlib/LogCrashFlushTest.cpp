#include "LogCrashFlush.h"
#include "ForkedChild.h"
#include "StandardOutput.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <gtest/gtest.h>

#include <csignal>
#include <exception>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {

using test::Pipe;
using test::signalThatEnded;
using test::statusOfForked;

namespace {

/// What a process writes, and how it ends, that crashes while two lines wait and nobody is there to
/// write them.
struct Crash {
    explicit Crash(const std::function<void()>& crash) {
        Pipe pipe;
        const int status = statusOfForked([&] {
            ::dup2(pipe.writer(), STDERR_FILENO); // What Qt says of it.
            const LogOutput output(pipe.writer());
            LogQueue queue(1000);
            queue.push(LogLine::make(u"one"));
            queue.push(LogLine::make(u"zwei ✓"));
            const LogCrashFlush flush(queue, output);
            crash();
        });
        signal = signalThatEnded(status);
        pipe.closeWriter();
        written = pipe.read();
    }

    int signal = 0;
    QByteArray written;
};

const QByteArray bothLines = "one\nzwei ✓\n";

class CrashSignals : public testing::TestWithParam<int> {};

/// The signals of a crash, but for those that a sanitizer handles itself.
std::vector<int> unclaimedSignals() {
    std::vector<int> signals = {SIGABRT};
#ifndef ORVANE_TSAN // Shows the default and handles them all the same.
    for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE}) {
        struct sigaction action = {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            signals.push_back(signal);
        }
    }
#endif
    return signals;
}

} // namespace

TEST_P(CrashSignals, writeWhatWaitsAndEndTheProcess) {
    const Crash crash([] { ::raise(GetParam()); });
    EXPECT_EQ(crash.signal, GetParam());
    EXPECT_EQ(crash.written, bothLines);
}

INSTANTIATE_TEST_SUITE_P(All, CrashSignals, testing::ValuesIn(unclaimedSignals()));

TEST(LogCrashFlush, aTerminatedProgramWritesWhatWaits) {
    const Crash crash([] { std::terminate(); });
    EXPECT_EQ(crash.signal, SIGABRT);
    EXPECT_TRUE(crash.written.endsWith(bothLines)) << crash.written.constData();
}

TEST(LogCrashFlush, aFatalMessageOfQtWritesWhatWaits) {
    const Crash crash([] { qFatal("so it is"); });
    EXPECT_EQ(crash.signal, SIGABRT);
    EXPECT_TRUE(crash.written.endsWith(QByteArray("so it is\n" + bothLines)))
        << crash.written.constData();
}

TEST(LogCrashFlush, aReaderWhoReadsNothingDoesNotKeepACrashedProgram) {
    const Pipe pipe;
    const int status = statusOfForked([&] {
        const LogOutput output(pipe.writer());
        LogQueue queue(1000000);
        queue.push(LogLine::make(QString(300000, u'x')));
        const LogCrashFlush flush(queue, output);
        std::abort();
    });
    EXPECT_EQ(signalThatEnded(status), SIGABRT);
}

TEST(LogCrashFlush, tellsHowManyLinesWereLeftOut) {
    Pipe pipe;
    const int status = statusOfForked([&] {
        const LogOutput output(pipe.writer());
        LogQueue queue(1);
        for (const QStringView line : {u"one", u"two", u"six"}) {
            queue.push(LogLine::make(line));
        }
        const LogCrashFlush flush(queue, output);
        std::abort();
    });
    EXPECT_EQ(signalThatEnded(status), SIGABRT);
    pipe.closeWriter();
    EXPECT_EQ(pipe.read(),
              u"one\n⚠️ Ausgabe wurde nicht gelesen - 2 Zeilen ausgelassen\n"_s.toUtf8());
}

TEST(LogCrashFlush, aForkedChildThatCrashesLeavesTheLinesToItsParent) {
    int child = 0;
    Pipe pipe;
    const LogOutput output(pipe.writer());
    {
        LogQueue queue(1000);
        queue.push(LogLine::make(u"one"));
        const LogCrashFlush flush(queue, output);
        child = signalThatEnded(statusOfForked([] { std::abort(); }));
    }
    EXPECT_EQ(child, SIGABRT);
    ::fcntl(pipe.reader(), F_SETFL, O_NONBLOCK);
    EXPECT_EQ(pipe.read(), QByteArray());
}

TEST(LogCrashFlush, leavesOtherHandlersAlone) {
    const auto own = [](int) {};
    const auto before = ::signal(SIGABRT, own);
    const LogOutput output(STDOUT_FILENO);
    LogQueue queue(1000);
    {
        const LogCrashFlush flush(queue, output);
        EXPECT_EQ(::signal(SIGABRT, own), +own);
    }
    EXPECT_EQ(::signal(SIGABRT, before), +own);
}

TEST(LogCrashFlush, givesTheSignalsBack) {
    const LogOutput output(STDOUT_FILENO);
    LogQueue queue(1000);
    {
        const LogCrashFlush flush(queue, output);
        struct sigaction action = {};
        ASSERT_EQ(::sigaction(SIGABRT, nullptr, &action), 0);
        EXPECT_NE(action.sa_handler, SIG_DFL);
    }
    struct sigaction action = {};
    ASSERT_EQ(::sigaction(SIGABRT, nullptr, &action), 0);
    EXPECT_EQ(action.sa_handler, SIG_DFL);
}

} // namespace orv
