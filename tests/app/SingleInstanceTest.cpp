#include "SingleInstance.h"

#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QUuid>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
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
    explicit SecondStart(const QByteArray& files, std::chrono::milliseconds patience = 10s)
        : thread_([this, files, patience] {
            SingleInstance instance(files, patience);
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
    const QByteArray files = QUuid::createUuid().toByteArray();
};

TEST_F(SingleInstanceTest, theFirstIsTheFirst) {
    SingleInstance first(files);
    EXPECT_EQ(first.claim(), Claim::First);
}

TEST_F(SingleInstanceTest, aSecondShowsTheFirst) {
    SingleInstance first(files);
    ASSERT_EQ(first.claim(), Claim::First);
    int shown = 0;
    first.answerWith([&] {
        ++shown;
        return true;
    });
    for (int start = 1; start <= 3; ++start) {
        const SecondStart second(files);
        ASSERT_TRUE(waitUntil([&] { return second.isDone(); }));
        EXPECT_EQ(second.claim(), Claim::Shown);
        EXPECT_EQ(shown, start);
    }
}

TEST_F(SingleInstanceTest, aSecondWaitsForAFirstThatIsStillStarting) {
    SingleInstance first(files);
    ASSERT_EQ(first.claim(), Claim::First);
    const SecondStart second(files);
    bool shown = false;
    first.answerWith([&] { return shown = true; });
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::Shown);
    EXPECT_TRUE(shown);
}

TEST_F(SingleInstanceTest, aSecondTakesThePlaceOfAFirstThatIsEnding) {
    std::optional<SingleInstance> first(files);
    ASSERT_EQ(first->claim(), Claim::First);
    bool asked = false;
    first->answerWith([&] {
        asked = true;
        return false;
    });
    const SecondStart second(files);
    ASSERT_TRUE(waitUntil([&] { return asked; }));
    EXPECT_FALSE(second.isDone());
    first.reset();
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::First);
}

TEST_F(SingleInstanceTest, aFirstThatDoesNotAnswerIsNotWaitedForForEver) {
    SingleInstance first(files);
    ASSERT_EQ(first.claim(), Claim::First);
    QElapsedTimer clock;
    clock.start();
    const SecondStart second(files, 100ms);
    EXPECT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_EQ(second.claim(), Claim::NoAnswer);
    EXPECT_GE(clock.elapsed(), 95);
}

TEST_F(SingleInstanceTest, aKilledFirstLeavesNothingBehind) {
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        SingleInstance first(files);
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
    SingleInstance next(files);
    EXPECT_EQ(next.claim(), Claim::First);
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(SingleInstanceTest, otherFilesAreAnotherProgram) {
    SingleInstance first(files);
    ASSERT_EQ(first.claim(), Claim::First);
    SingleInstance other(files + "other");
    EXPECT_EQ(other.claim(), Claim::First);
}

} // namespace

} // namespace orv::test
