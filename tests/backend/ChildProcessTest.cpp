#include "ChildProcess.h"
#include "ProcessTable.h"
#include "SpawnProgram.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::test::waitUntil;

namespace orv {

namespace {

/// A shell command running as a child, with what became of it.
class Child {
  public:
    explicit Child(const QString& command, const QString& program = u"/bin/sh"_s,
                   const QString& option = u"-c"_s) {
        ChildProcess::Handlers handlers;
        handlers.output = [this](const QByteArray& bytes) {
            const std::lock_guard lock(mutex_);
            EXPECT_FALSE(bytes.isEmpty());
            EXPECT_NE(std::this_thread::get_id(), mainThread_);
            output_ += bytes;
        };
        handlers.finished = [this](int status) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread_);
            EXPECT_FALSE(status_.has_value());
            status_ = status;
            outputAtEnd_ = output();
        };
        ChildProcess::Launch launch = ChildProcess::start(
            {program, {option, command}, ownEnvironment()}, &context_, std::move(handlers), 50ms);
        EXPECT_EQ(launch.error, QString());
        process = std::move(launch.process);
    }

    QByteArray output() const {
        const std::lock_guard lock(mutex_);
        return output_;
    }

    /// Everything that was read before the end was told.
    QByteArray outputAtEnd() const { return outputAtEnd_; }

    bool waitForText(const QByteArray& text) const {
        return waitUntil([&] { return output().contains(text); });
    }

    /// The status told, once it is; -1 if it never is.
    int status() const {
        return waitUntil([this] { return status_.has_value(); }) ? *status_ : -1;
    }

    bool hasFinished() const { return status_.has_value(); }

  private:
    const std::thread::id mainThread_ = std::this_thread::get_id();
    mutable std::mutex mutex_;
    QByteArray output_;
    QByteArray outputAtEnd_;
    std::optional<int> status_;
    QObject context_;

  public:
    std::unique_ptr<ChildProcess> process; // Goes first: it reports to the members above.
};

Child python(const QString& program) {
    return Child(u"import os, signal, sys, time\n"_s + program, u"/usr/bin/python3"_s);
}

} // namespace

TEST(ChildProcess, tellsTheExitCode) {
    EXPECT_EQ(Child(u"exit 0"_s).status(), 0);
    EXPECT_EQ(Child(u"exit 42"_s).status(), 42);
}

TEST(ChildProcess, tellsTheNumberOfTheSignalThatEndedTheChild) {
    EXPECT_EQ(Child(u"kill -s SEGV $$"_s).status(), SIGSEGV);
}

TEST(ChildProcess, readsBothStandardOutputAndStandardError) {
    const Child child(u"echo out; echo err >&2"_s);
    EXPECT_EQ(child.status(), 0);
    EXPECT_EQ(child.outputAtEnd(), QByteArray("out\nerr\n"));
}

TEST(ChildProcess, everythingPrintedIsReadBeforeTheEndIsTold) {
    for (int round = 0; round < 20; ++round) {
        const Child child(u"head -c 60000 /dev/zero | tr '\\0' x"_s);
        ASSERT_EQ(child.status(), 0);
        ASSERT_EQ(child.outputAtEnd(), QByteArray(60000, 'x'));
    }
}

TEST(ChildProcess, aVeryLongLinePasses) {
    const Child child(u"head -c 3000000 /dev/zero | tr '\\0' x"_s);
    EXPECT_EQ(child.status(), 0);
    EXPECT_EQ(child.outputAtEnd(), QByteArray(3000000, 'x'));
}

TEST(ChildProcess, aChildThatFloodsItsOutputDoesNotHoldTheMainThreadUp) {
    const Child child(u"exec yes"_s);
    ASSERT_TRUE(waitUntil([&] { return child.output().size() > 1000000; }));
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++ticks; });
    timer.start(1ms);
    EXPECT_TRUE(waitUntil([&] { return ticks >= 50; }));
    child.process->kill();
    EXPECT_EQ(child.status(), SIGKILL);
}

TEST(ChildProcess, aChildThatClosesItsOutputGoesOnRunning) {
    const Child child(u"echo ready; exec >&- 2>&-; exec sleep 60"_s);
    ASSERT_TRUE(child.waitForText("ready"));
    EXPECT_TRUE(child.process->isRunning());
    child.process->terminate();
    EXPECT_EQ(child.status(), SIGTERM);
}

TEST(ChildProcess, aDescendantThatKeepsTheOutputOpenDoesNotHideTheEnd) {
    const Child child(u"sleep 60 & echo $!; exit 3"_s);
    EXPECT_EQ(child.status(), 3);
    ::kill(child.output().trimmed().toInt(), SIGKILL);
}

TEST(ChildProcess, aDescendantThatFloodsTheOutputDoesNotHideTheEnd) {
    // The flood ends by itself: nobody reads any more.
    const Child child(u"yes & exit 3"_s);
    EXPECT_EQ(child.status(), 3);
}

TEST(ChildProcess, hasAGroupOfItsOwnSoThatCtrlCPassesItBy) {
    const Child child(u"exec sleep 60"_s);
    const auto pid = static_cast<pid_t>(child.process->processIdentifier());
    EXPECT_EQ(::getpgid(pid), pid);
    EXPECT_NE(::getpgid(pid), ::getpgrp());
    EXPECT_EQ(test::aliveInGroup(pid), 2) << "the child and the process that watches over it";
    child.process->kill();
    EXPECT_EQ(child.status(), SIGKILL);
}

TEST(ChildProcess, inheritsNoDescriptorButItsOwnThree) {
    const int open = ::open("/dev/null", O_RDONLY); // Deliberately not closed on exec.
    ASSERT_GT(open, 2);
    const Child child = python(u"print(sorted(os.listdir('/proc/self/fd')))"_s);
    EXPECT_EQ(child.status(), 0);
    // The fourth is the listing's own.
    EXPECT_EQ(child.output(), QByteArray("['0', '1', '2', '3']\n"));
    ::close(open);
}

TEST(ChildProcess, findsItsStandardInputEmpty) {
    const Child child(u"read line; echo $?"_s);
    EXPECT_EQ(child.status(), 0);
    EXPECT_EQ(child.output(), QByteArray("1\n"));
}

TEST(ChildProcess, obeysSignalsThatTheProgramItselfIgnoresOrBlocks) {
    const auto handler = ::signal(SIGINT, SIG_IGN);
    sigset_t blocked = {};
    sigset_t before = {};
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const Child child(u"exec sleep 60"_s);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::signal(SIGINT, handler);
    child.process->interrupt();
    EXPECT_EQ(child.status(), SIGINT);
}

TEST(ChildProcess, runsUntilItsEndAndNoSignalIsSentAfterwards) {
    const Child child(u"exec sleep 60"_s);
    EXPECT_TRUE(child.process->isRunning());
    EXPECT_FALSE(child.process->waitForEnd(1ms));
    child.process->kill();
    EXPECT_TRUE(child.process->waitForEnd(20s));
    EXPECT_FALSE(child.process->isRunning());
    EXPECT_FALSE(child.hasFinished()) << "told by the event loop, not while waiting";
    EXPECT_EQ(child.status(), SIGKILL);
    child.process->terminate();
    EXPECT_FALSE(child.process->isRunning());
}

TEST(ChildProcess, leavesNoProcessAndNoDescriptorBehind) {
    EXPECT_EQ(Child(u"exit 0"_s).status(), 0); // What is opened once and kept.
    const int descriptors = test::descriptorCount();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(Child(u"echo hello"_s).status(), 0);
    }
    EXPECT_EQ(test::childCount(), 0);
    EXPECT_EQ(test::descriptorCount(), descriptors);
}

TEST(ChildProcess, afterTheEndIsToldNothingIsLeftInTheProcessTable) {
    const Child child(u"exit 0"_s);
    EXPECT_EQ(child.status(), 0);
    EXPECT_EQ(test::childCount(), 0);
}

TEST(ChildProcess, destroyingTheObjectEndsTheChildSoonAfter) {
    pid_t pid = 0;
    {
        Child child = python(u"signal.signal(signal.SIGTERM, signal.SIG_IGN)\n"
                             u"signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
                             u"print('ready', flush=True)\n"
                             u"while True: signal.pause()"_s);
        ASSERT_TRUE(child.waitForText("ready"));
        pid = static_cast<pid_t>(child.process->processIdentifier());
    }
    EXPECT_TRUE(waitUntil([&] { return test::aliveInGroup(pid) == 0; }));
    EXPECT_TRUE(test::collectChildren());
}

TEST(ChildProcess, tellsWhyTheProgramCannotRun) {
    QObject context;
    const QTemporaryDir folder;
    const ChildProcess::Launch launch = ChildProcess::start(
        {folder.filePath(u"missing"_s), {}, {}}, &context,
        {.output = [](const QByteArray&) { FAIL(); }, .finished = [](int) { FAIL(); }}, 50ms);
    EXPECT_EQ(launch.process, nullptr);
    EXPECT_EQ(launch.error, u"No such file or directory"_s);
    EXPECT_EQ(test::childCount(), 0);
}

} // namespace orv
