#include "StallWatch.h"

#include "LogCapture.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

/// A clock that stands still until a test moves it.
class HandClock {
  public:
    std::chrono::steady_clock::time_point now() {
        const std::chrono::milliseconds time(time_.load());
        ++asked_; // Whoever sees that it was asked knows that the answer is fixed.
        return std::chrono::steady_clock::time_point(time);
    }

    void advance(std::chrono::milliseconds by) { time_ += by.count(); }

    int asked() const { return asked_; }

  private:
    std::atomic<std::int64_t> time_ = 0;
    std::atomic<int> asked_ = 0;
};

class StallWatchTest : public ::testing::Test {
  protected:
    std::unique_ptr<StallWatch> watch() {
        return std::make_unique<StallWatch>(
            50ms,
            [this](std::chrono::milliseconds stalled) {
                const std::lock_guard lock(mutex);
                reports.push_back(stalled);
            },
            1ms, [this] { return clock.now(); });
    }

    std::vector<std::chrono::milliseconds> reported() {
        const std::lock_guard lock(mutex);
        return reports;
    }

    /// Makes the watched thread, this one, stall: the time passes between a tick, for which the
    /// clock is asked an odd number of times, and its answer, once the event loop runs again.
    void stall(std::chrono::milliseconds time) {
        while (clock.asked() % 2 == 0) {
            std::this_thread::yield();
        }
        clock.advance(time);
    }

    /// Lets the tick that is under way, and one more, be answered.
    bool comeRound() {
        const int before = clock.asked();
        return waitUntil([&] { return clock.asked() >= before + 3; });
    }

    HandClock clock;
    std::mutex mutex;
    std::vector<std::chrono::milliseconds> reports;
};

TEST_F(StallWatchTest, reportsHowLongTheThreadWasBlocked) {
    const auto watching = watch();
    stall(51ms);
    EXPECT_TRUE(reported().empty()) << "not before the thread has come round";
    ASSERT_TRUE(waitUntil([this] { return !reported().empty(); }));
    stall(400ms);
    ASSERT_TRUE(waitUntil([this] { return reported().size() == 2; }));
    EXPECT_EQ(reported(), (std::vector{51ms, 400ms}));
}

TEST_F(StallWatchTest, keepsQuietUpToTheLimit) {
    const auto watching = watch();
    stall(50ms);
    ASSERT_TRUE(comeRound());
    stall(1ms);
    ASSERT_TRUE(comeRound());
    EXPECT_TRUE(reported().empty());
}

TEST_F(StallWatchTest, endsWhileTheThreadIsBlocked) {
    auto watching = watch();
    stall(1000ms);
    watching.reset();
    drainEvents();
    EXPECT_TRUE(reported().empty());
}

TEST_F(StallWatchTest, theLineHoldsTheTime) {
    const LogCapture log;
    logStall(73ms);
    EXPECT_EQ(log.lines(), QStringList{u"⚠️ Haupt-Thread war 73 ms blockiert"_s});
}

} // namespace

} // namespace orv::test
