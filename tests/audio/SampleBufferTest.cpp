#include "SampleBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace {

using orv::SampleBuffer;

constexpr std::array<float, 3> three{0.1F, 0.2F, 0.3F};

TEST(SampleBuffer, appendTellsTheNewTotal) {
    SampleBuffer buffer(16);
    EXPECT_EQ(buffer.append(three).total, 3U);
    EXPECT_EQ(buffer.append(three).total, 6U);
    EXPECT_EQ(buffer.append({}).total, 6U);
    EXPECT_EQ(buffer.size(), 6U);
}

TEST(SampleBuffer, takesEverythingOnlyAboveTheBound) {
    SampleBuffer buffer(16);
    buffer.append(three);
    const SampleBuffer::Taken refused = buffer.takeIfMoreThan(3);
    EXPECT_EQ(refused.count, 3U);
    EXPECT_TRUE(refused.samples.empty());
    EXPECT_EQ(buffer.size(), 3U);

    const SampleBuffer::Taken taken = buffer.takeIfMoreThan(2);
    EXPECT_EQ(taken.count, 3U);
    EXPECT_EQ(taken.samples, std::vector<float>(three.begin(), three.end()));
    EXPECT_EQ(buffer.size(), 0U);
}

TEST(SampleBuffer, takeAllLeavesItEmpty) {
    SampleBuffer buffer(16);
    buffer.append(three);
    EXPECT_EQ(buffer.takeAll(), std::vector<float>(three.begin(), three.end()));
    EXPECT_TRUE(buffer.takeAll().empty());
}

TEST(SampleBuffer, clearDropsTheSamples) {
    SampleBuffer buffer(16);
    buffer.append(three);
    buffer.clear();
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_EQ(buffer.append(three).total, 3U);
}

TEST(SampleBuffer, growsBeyondItsReserve) {
    SampleBuffer buffer(2);
    std::vector<float> expected;
    for (int i = 0; i < 1000; ++i) {
        const float value = static_cast<float>(i);
        buffer.append(std::array{value, value});
        expected.insert(expected.end(), 2, value);
    }
    EXPECT_EQ(buffer.takeAll(), expected);
}

TEST(SampleBuffer, theMemoryOfARecycledChunkComesRoundAgain) {
    SampleBuffer buffer(64);
    std::vector<const float*> seen;
    for (int i = 0; i < 30; ++i) {
        buffer.append(three);
        std::vector<float> chunk = buffer.takeAll();
        ASSERT_GE(chunk.capacity(), 64U);
        if (std::find(seen.begin(), seen.end(), chunk.data()) == seen.end()) {
            seen.push_back(chunk.data());
        }
        buffer.recycle(std::move(chunk));
    }
    EXPECT_LE(seen.size(), 3U);
}

TEST(SampleBuffer, keepsItsReserveWhenChunksDoNotComeBack) {
    SampleBuffer buffer(64);
    std::vector<std::vector<float>> kept;
    for (int i = 0; i < 6; ++i) {
        buffer.append(three);
        kept.push_back(buffer.takeAll());
        EXPECT_GE(kept.back().capacity(), 64U);
        EXPECT_EQ(kept.back().size(), 3U);
    }
}

TEST(SampleBuffer, recycledSamplesNeverShowUpAgain) {
    SampleBuffer buffer(16);
    for (int i = 0; i < 5; ++i) {
        buffer.recycle(std::vector<float>(100, 9.0F));
        buffer.recycle(std::vector<float>(20, 9.0F));
        buffer.recycle({});
        buffer.append(three);
        EXPECT_EQ(buffer.takeAll(), std::vector<float>(three.begin(), three.end()));
    }
}

TEST(SampleBuffer, keepsTheNewestOfMoreThanOneMessageCanCarry) {
    SampleBuffer buffer(16);
    std::vector<float> second(48000);
    std::size_t dropped = 0;
    for (int i = 0; i < 200; ++i) {
        std::ranges::fill(second, static_cast<float>(i));
        const SampleBuffer::Appended appended = buffer.append(second);
        dropped += appended.hasDropped ? 1 : 0;
        ASSERT_LE(appended.total, SampleBuffer::longestChunk);
    }
    EXPECT_EQ(dropped, 1U) << "told when it begins, not each time";
    const std::vector<float> kept = buffer.takeAll();
    EXPECT_GE(kept.size(), SampleBuffer::longestChunk - SampleBuffer::dropped - 48000);
    EXPECT_EQ(kept.back(), 199.0F);
    EXPECT_TRUE(std::ranges::is_sorted(kept)) << "in the order of capture, without a hole";
    EXPECT_FALSE(buffer.append(second).hasDropped);
}

TEST(SampleBuffer, takesTheEndOfABufferThatAloneIsTooMuch) {
    SampleBuffer buffer(16);
    buffer.append(three);
    std::vector<float> endless(SampleBuffer::longestChunk + 5, 1.0F);
    endless.back() = 2.0F;
    EXPECT_EQ(buffer.append(endless).total, SampleBuffer::longestChunk);
    EXPECT_EQ(buffer.takeAll().back(), 2.0F);
}

TEST(SampleBuffer, givesTheMemoryOfALongWaitBackWhenItIsCleared) {
    SampleBuffer buffer(16);
    buffer.append(std::vector<float>(1'000'000));
    buffer.clear();
    buffer.append(three);
    std::vector<float> chunk = buffer.takeAll();
    EXPECT_LE(chunk.capacity(), 64U);
}

} // namespace
