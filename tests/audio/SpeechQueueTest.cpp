#include "SpeechQueue.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr SpeechQueue::TimePoint start{};

TEST(SpeechQueue, givesEverythingInOrder) {
    SpeechQueue queue(15s);
    queue.add("one", start);
    queue.add("two", start + 1s);
    EXPECT_EQ(queue.take(start + 2s), "one");
    EXPECT_EQ(queue.take(start + 2s), "two");
    EXPECT_EQ(queue.take(start + 2s), std::nullopt);
    EXPECT_EQ(queue.dropped(), 0);
}

TEST(SpeechQueue, givesWhatHasWaitedForAsLongAsItMay) {
    SpeechQueue queue(15s);
    queue.add("one", start);
    EXPECT_EQ(queue.take(start + 15s), "one");
}

TEST(SpeechQueue, dropsWhatHasWaitedForTooLongAndCountsIt) {
    SpeechQueue queue(15s);
    queue.add("one", start);
    queue.add("four", start + 1s);
    queue.add("three", start + 2s);
    EXPECT_EQ(queue.take(start + 16s + 1ms), "three");
    EXPECT_EQ(queue.takeDropped(), 7);
    EXPECT_EQ(queue.takeDropped(), 0);
}

TEST(SpeechQueue, holdsNoMoreThanWhatMayWaitWhenNothingIsTaken) {
    SpeechQueue queue(15s);
    for (int second = 0; second < 100; ++second) {
        queue.add("s", start + std::chrono::seconds(second));
    }
    EXPECT_EQ(queue.dropped(), 84); // The latest, and those of the 15 s before it.
}

TEST(SpeechQueue, whatIsClearedWasNotDropped) {
    SpeechQueue queue(15s);
    queue.add("one", start);
    queue.clear();
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.take(start), std::nullopt);
    EXPECT_EQ(queue.dropped(), 0);
}

} // namespace
} // namespace orv
