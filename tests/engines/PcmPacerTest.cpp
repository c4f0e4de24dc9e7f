#include "PcmPacer.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr std::int64_t rate = 48000;

QByteArray sound(std::chrono::milliseconds length, char sign = 'x') {
    return QByteArray(static_cast<qsizetype>(length.count() * rate / 1000 * 2), sign);
}

std::chrono::milliseconds lengthOf(const QList<QByteArray>& blocks) {
    const auto bytes =
        std::accumulate(blocks.begin(), blocks.end(), qsizetype(0),
                        [](qsizetype sum, const QByteArray& block) { return sum + block.size(); });
    return std::chrono::milliseconds(bytes * 1000 / rate / 2);
}

class PcmPacerTest : public ::testing::Test {
  protected:
    /// All blocks that go until nothing waits any more.
    QList<QByteArray> theRest() {
        QList<QByteArray> blocks;
        while (pacer.untilNext(now)) {
            blocks += pacer.due(now);
            now += 10ms;
        }
        return blocks;
    }

    PcmPacer pacer{rate};
    PcmPacer::TimePoint now{1h};
};

TEST_F(PcmPacerTest, soundThatComesInTimeGoesAtOnce) {
    for (int i = 0; i < 200; ++i) {
        pacer.add(sound(85ms));
        EXPECT_EQ(lengthOf(pacer.due(now)), 85ms) << i;
        EXPECT_EQ(pacer.untilNext(now), std::nullopt);
        now += 85ms;
    }
}

TEST_F(PcmPacerTest, shortPiecesArePutTogether) {
    pacer.add(sound(20ms));
    EXPECT_TRUE(pacer.due(now).isEmpty());
    EXPECT_EQ(pacer.untilNext(now), std::nullopt);
    pacer.add(sound(20ms));
    EXPECT_TRUE(pacer.due(now).isEmpty());
    pacer.add(sound(20ms));
    EXPECT_EQ(pacer.due(now), QList<QByteArray>{sound(60ms)});
}

TEST_F(PcmPacerTest, whatHasGatheredGoesNoFasterThanItWasSpoken) {
    pacer.add(sound(4s));
    std::chrono::milliseconds sent{};
    const auto begin = now;
    while (pacer.untilNext(now)) {
        for (const QByteArray& block : pacer.due(now)) {
            EXPECT_EQ(block.size(), sound(100ms).size());
            sent += 100ms;
        }
        EXPECT_LE(sent, now - begin + PcmPacer::lead);
        now += std::max(pacer.untilNext(now).value_or(1ms), std::chrono::milliseconds(1ms));
    }
    EXPECT_EQ(sent, 4s);
    EXPECT_LE(now - begin, 4s);
    EXPECT_GE(now - begin, 3600ms);
}

TEST_F(PcmPacerTest, theOldestIsLeftOutOfWhatHasWaitedTooLong) {
    pacer.add(sound(3s, 'a'));
    EXPECT_EQ(pacer.takeDropped(), 0ms);
    pacer.add(sound(4s, 'b'));
    EXPECT_EQ(pacer.takeDropped(), 2s);
    EXPECT_EQ(pacer.takeDropped(), 0ms);
    EXPECT_EQ(pacer.due(now).first(), sound(100ms, 'a'));
    const QList<QByteArray> rest = theRest();
    EXPECT_EQ(rest.last(), sound(100ms, 'b'));
    EXPECT_EQ(lengthOf(rest), 5s - 200ms);
}

TEST_F(PcmPacerTest, aPauseIsNoCredit) {
    pacer.add(sound(100ms));
    pacer.due(now);
    now += 1h;
    pacer.add(sound(5s));
    EXPECT_LE(lengthOf(pacer.due(now)), PcmPacer::lead);
}

TEST_F(PcmPacerTest, theLastBlockIsFilledUpWithSilence) {
    pacer.add(sound(110ms));
    pacer.finish();
    const QList<QByteArray> blocks = theRest();
    ASSERT_EQ(blocks.size(), 2);
    EXPECT_EQ(blocks[0], sound(100ms));
    EXPECT_EQ(blocks[1], sound(10ms) + QByteArray(sound(40ms).size(), '\0'));
    EXPECT_TRUE(pacer.isEmpty());
    pacer.finish();
    EXPECT_TRUE(pacer.isEmpty());
}

} // namespace
} // namespace orv
