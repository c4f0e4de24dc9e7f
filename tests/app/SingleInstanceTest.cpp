#include "SingleInstance.h"

#include "WaitUntil.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <csignal>
#include <optional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace orv::test {

namespace {

using Claim = SingleInstance::Claim;

/// Another start of the program: claims on a thread of its own while this one runs its event loop.
class SecondStart {
  public:
    SecondStart(const QString& folder, const QByteArray& files,
                std::chrono::milliseconds patience = 10s)
        : thread_([this, folder, files, patience] {
            SingleInstance instance(folder, files, patience);
            claim_ = instance.claim();
            done_ = true;
        }) {}

    ~SecondStart() { thread_.join(); }

    bool isDone() const { return done_; }

    Claim claim() const { return claim_; }

  private:
    std::atomic<bool> done_ = false;
    std::atomic<Claim> claim_ = Claim::First;
    std::thread thread_;
};

class SingleInstanceTest : public ::testing::Test {
  protected:
    QString folder() const { return folder_.path(); }

    QStringList left() const {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }

    const QByteArray files = "a home and its settings";

  private:
    QTemporaryDir folder_;
};

TEST_F(SingleInstanceTest, theFirstIsTheFirst) {
    SingleInstance first(folder(), files);
    EXPECT_EQ(first.claim(), Claim::First);
}

TEST_F(SingleInstanceTest, aSecondShowsTheFirst) {
    SingleInstance first(folder(), files);
    ASSERT_EQ(first.claim(), Claim::First);
    int shown = 0;
    first.answerWith([&] {
        ++shown;
        return true;
    });
    for (int start = 1; start <= 3; ++start) {
        const SecondStart second(folder(), files);
        ASSERT_TRUE(waitUntil([&] { return second.isDone(); }));
        EXPECT_EQ(second.claim(), Claim::Shown);
        EXPECT_EQ(shown, start);
    }
}

TEST_F(SingleInstanceTest, aSecondWaitsForAFirstThatIsStillStarting) {
    SingleInstance first(folder(), files);
    ASSERT_EQ(first.claim(), Claim::First);
    const SecondStart second(folder(), files);
    bool shown = false;
    first.answerWith([&] { return shown = true; });
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::Shown);
    EXPECT_TRUE(shown);
}

TEST_F(SingleInstanceTest, aSecondTakesThePlaceOfAFirstThatIsEnding) {
    std::optional<SingleInstance> first(std::in_place, folder(), files);
    ASSERT_EQ(first->claim(), Claim::First);
    bool asked = false;
    first->answerWith([&] {
        asked = true;
        return false;
    });
    const SecondStart second(folder(), files);
    ASSERT_TRUE(waitUntil([&] { return asked; }));
    EXPECT_FALSE(second.isDone());
    first.reset();
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::First);
}

TEST_F(SingleInstanceTest, aFirstThatDoesNotAnswerIsNotWaitedForForEver) {
    SingleInstance first(folder(), files);
    ASSERT_EQ(first.claim(), Claim::First);
    QElapsedTimer clock;
    clock.start();
    const SecondStart second(folder(), files, 100ms);
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::NoAnswer);
    EXPECT_GE(clock.elapsed(), 95);
}

TEST_F(SingleInstanceTest, aKilledFirstLeavesNothingBehind) {
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        SingleInstance first(folder(), files);
        const char byte = first.claim() == Claim::First ? 'y' : 'n';
        (void)!::write(ready[1], &byte, 1);
        for (;;) {
            ::pause();
        }
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    SingleInstance next(folder(), files);
    EXPECT_EQ(next.claim(), Claim::First);
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(SingleInstanceTest, aFirstWhoseQueueIsFullIsNotWaitedForForEver) {
    SingleInstance first(folder(), files); // It hangs: nobody takes the starts off its queue.
    ASSERT_EQ(first.claim(), Claim::First);
    for (int start = 0; start < 20; ++start) {
        SingleInstance second(folder(), files, 20ms);
        ASSERT_EQ(second.claim(), Claim::NoAnswer) << start;
    }
}

TEST_F(SingleInstanceTest, leavesNothingBehind) {
    {
        SingleInstance first(folder(), files);
        ASSERT_EQ(first.claim(), Claim::First);
        EXPECT_EQ(left().size(), 2);
        SingleInstance second(folder(), files, 1ms);
        EXPECT_EQ(second.claim(), Claim::NoAnswer);
    }
    EXPECT_EQ(left(), QStringList());
}

TEST_F(SingleInstanceTest, aLockThatCannotBeTakenLeavesNothingBehind) {
    QString lock;
    {
        SingleInstance first(folder(), files);
        ASSERT_EQ(first.claim(), Claim::First);
        lock = left().filter(QStringLiteral(".lock")).value(0);
    }
    ASSERT_TRUE(QDir(folder()).mkdir(lock)); // Nobody can open it as a file.
    {
        SingleInstance first(folder(), files);
        EXPECT_EQ(first.claim(), Claim::First) << "there is no way to find out";
        EXPECT_EQ(left(), QStringList(lock)) << "the door belongs to whoever has the lock";
    }
    EXPECT_EQ(left(), QStringList(lock));
}

TEST_F(SingleInstanceTest, aFolderThatOthersMayChangeIsNotUsed) {
    ASSERT_EQ(::chmod(qPrintable(folder()), 0777), 0);
    SingleInstance first(folder(), files);
    SingleInstance second(folder(), files);
    EXPECT_EQ(first.claim(), Claim::First);
    EXPECT_EQ(second.claim(), Claim::First) << "there is no way to find out";
    EXPECT_EQ(left(), QStringList());
}

TEST_F(SingleInstanceTest, aDeepFolderIsNoHindrance) {
    const QString deep = folder() + u'/' + QString(200, u'x');
    SingleInstance first(deep, files);
    ASSERT_EQ(first.claim(), Claim::First);
    SingleInstance second(deep, files, 1ms);
    EXPECT_EQ(second.claim(), Claim::NoAnswer);
}

TEST_F(SingleInstanceTest, otherFilesAreAnotherProgram) {
    SingleInstance first(folder(), files);
    ASSERT_EQ(first.claim(), Claim::First);
    SingleInstance other(folder(), files + "other");
    EXPECT_EQ(other.claim(), Claim::First);
}

} // namespace

} // namespace orv::test
