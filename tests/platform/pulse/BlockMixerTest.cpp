#include "BlockMixer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using namespace std::chrono_literals;
using orv::BlockMixer;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

const BlockMixer::Time begin{1000h};

std::vector<float> stereo(std::size_t frames, float left, float right) {
    std::vector<float> samples;
    for (std::size_t i = 0; i < frames; ++i) {
        samples.insert(samples.end(), {left, right});
    }
    return samples;
}

class BlockMixerTest : public testing::Test {
  protected:
    void push(std::uint32_t id, std::size_t frames, float left, float right, BlockMixer::Time now) {
        mixer.push(id, stereo(frames, left, right).data(), frames, now);
    }

    std::vector<float> left(std::size_t block) const {
        return {blocks.at(block).begin(), blocks.at(block).begin() + 960};
    }

    std::vector<float> right(std::size_t block) const {
        return {blocks.at(block).begin() + 960, blocks.at(block).end()};
    }

    std::vector<std::vector<float>> blocks;
    BlockMixer mixer{begin, [this](std::span<const float> block) {
                         blocks.emplace_back(block.begin(), block.end());
                     }};
};

TEST_F(BlockMixerTest, laysABlockOutPlanarLeftFirst) {
    mixer.addStream(1);
    push(1, 960, 0.25F, -0.5F, begin);
    ASSERT_THAT(blocks, SizeIs(1));
    ASSERT_THAT(blocks[0], SizeIs(1920));
    EXPECT_THAT(left(0), Each(0.25F));
    EXPECT_THAT(right(0), Each(-0.5F));
}

TEST_F(BlockMixerTest, regroupsPiecesOfAnySizeWithoutLosingASample) {
    mixer.addStream(1);
    std::vector<float> sent;
    float value = 0;
    for (const std::size_t frames : {1U, 958U, 3U, 2000U, 878U}) {
        std::vector<float> piece;
        for (std::size_t i = 0; i < frames; ++i) {
            value += 1;
            piece.insert(piece.end(), {value, -value});
            sent.push_back(value);
        }
        mixer.push(1, piece.data(), frames, begin);
    }
    ASSERT_THAT(blocks, SizeIs(4));
    std::vector<float> got;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::vector<float> part = left(i);
        got.insert(got.end(), part.begin(), part.end());
        EXPECT_FLOAT_EQ(right(i).front(), -part.front());
    }
    EXPECT_EQ(got, sent);
}

TEST_F(BlockMixerTest, addsTheStreamsOfAnApplication) {
    mixer.addStream(1);
    mixer.addStream(2);
    push(1, 480, 0.25F, 0.0F, begin); // Now both are heard of.
    push(2, 960, 0.5F, 0.125F, begin);
    EXPECT_THAT(blocks, IsEmpty());
    push(1, 480, 0.25F, 0.0F, begin);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_THAT(left(0), Each(0.75F));
    EXPECT_THAT(right(0), Each(0.125F));
}

TEST_F(BlockMixerTest, sendsSilentBlocksAtThePaceOfTheClockWhileNothingPlays) {
    for (auto now = begin; now <= begin + 1s; now += 7ms) {
        mixer.advance(now);
    }
    ASSERT_THAT(blocks, SizeIs(49)); // The last look was at 994 ms.
    EXPECT_THAT(blocks[0], Each(0.0F));
    EXPECT_THAT(blocks[0], SizeIs(1920));
}

TEST_F(BlockMixerTest, makesUpForALateLookAtTheClock) {
    mixer.advance(begin + 200ms);
    EXPECT_THAT(blocks, SizeIs(10));
}

TEST_F(BlockMixerTest, doesNotPadAStreamThatDeliversLate) {
    mixer.addStream(1);
    push(1, 960, 1, 1, begin);
    mixer.advance(begin + 249ms);
    EXPECT_THAT(blocks, SizeIs(1));
    push(1, 960, 1, 1, begin + 249ms);
    EXPECT_THAT(blocks, SizeIs(2));
    EXPECT_THAT(blocks[1], Each(1.0F));
}

TEST_F(BlockMixerTest, keepsTheTimeThatPassedBeforeAStreamCountsAsSilent) {
    mixer.addStream(1);
    push(1, 960, 1, 1, begin);
    mixer.advance(begin + 250ms);
    EXPECT_THAT(blocks, SizeIs(1 + 12));
}

TEST_F(BlockMixerTest, aStreamThatFallsSilentDoesNotHoldUpTheOthers) {
    mixer.addStream(1);
    mixer.addStream(2);
    push(1, 100, 0.5F, 0.5F, begin);
    auto now = begin;
    for (; now < begin + 240ms; now += 20ms) {
        push(2, 960, 0.25F, 0.25F, now);
    }
    EXPECT_THAT(blocks, IsEmpty());
    push(2, 960, 0.25F, 0.25F, begin + 260ms);
    EXPECT_THAT(blocks, SizeIs(13));
    EXPECT_FLOAT_EQ(left(0).front(), 0.75F);
    EXPECT_FLOAT_EQ(left(0).back(), 0.25F);
}

TEST_F(BlockMixerTest, mixesInWhatAnEndedStreamHasLeft) {
    mixer.addStream(1);
    push(1, 500, 0.5F, 0.5F, begin);
    mixer.removeStream(1);
    mixer.advance(begin + 20ms);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_EQ(std::count(blocks[0].begin(), blocks[0].end(), 0.5F), 1000);
}

TEST_F(BlockMixerTest, anEndedStreamGivesNothingMoreAndItsNumberMayReturn) {
    mixer.addStream(1);
    mixer.removeStream(1);
    push(1, 960, 0.5F, 0.5F, begin);
    EXPECT_THAT(blocks, IsEmpty());
    mixer.addStream(1);
    push(1, 960, 0.25F, 0.25F, begin);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_THAT(blocks[0], Each(0.25F));
}

TEST_F(BlockMixerTest, aHoleInTheRecordingIsSilence) {
    mixer.addStream(1);
    mixer.push(1, nullptr, 960, begin);
    ASSERT_THAT(blocks, SizeIs(1));
    EXPECT_THAT(blocks[0], Each(0.0F));
}

TEST_F(BlockMixerTest, keepsTheNewestSecondOfAStreamThatNobodyTakes) {
    mixer.addStream(1);
    mixer.addStream(2);
    push(2, 1, 0, 0, begin); // Holds the first one up.
    push(1, 30000, 0.25F, 0.25F, begin);
    push(1, 60000, 0.5F, 0.5F, begin);
    EXPECT_THAT(blocks, IsEmpty());
    mixer.removeStream(2);
    mixer.advance(begin);
    ASSERT_THAT(blocks, SizeIs(50));
    EXPECT_THAT(blocks[0], Each(0.5F));
    EXPECT_THAT(blocks[49], Each(0.5F));
}

TEST_F(BlockMixerTest, doesNotMakeUpForAStandstill) {
    mixer.advance(begin + 20ms);
    blocks.clear();
    mixer.advance(begin + 20ms + BlockMixer::longestStandstill);
    EXPECT_THAT(blocks, SizeIs(50)) << "a second is made up for";
    blocks.clear();
    mixer.advance(begin + 1h);
    EXPECT_THAT(blocks, SizeIs(1));
    mixer.advance(begin + 1h + 40ms);
    EXPECT_THAT(blocks, SizeIs(3)) << "and goes on at its pace";
}

TEST_F(BlockMixerTest, hasOnlyASecondOfAStreamThatDeliversEverythingAfterAStandstill) {
    mixer.addStream(1);
    push(1, 960, 0.5F, 0.5F, begin);
    blocks.clear();
    push(1, 48000 * 120, 0.5F, 0.5F, begin + 2min);
    EXPECT_LE(blocks.size(), 50U);
}

TEST_F(BlockMixerTest, finishesWithWhatIsLeftOfAllStreams) {
    mixer.addStream(1);
    mixer.addStream(2);
    push(2, 100, 0.5F, 0.5F, begin);
    push(1, 1000, 0.25F, 0.25F, begin);
    ASSERT_THAT(blocks, IsEmpty()) << "it waits for the second stream";
    mixer.finish();
    ASSERT_THAT(blocks, SizeIs(2));
    EXPECT_FLOAT_EQ(left(0)[0], 0.75F);
    EXPECT_FLOAT_EQ(left(0)[959], 0.25F);
    EXPECT_FLOAT_EQ(left(1)[39], 0.25F);
    EXPECT_FLOAT_EQ(left(1)[40], 0.0F);
    mixer.finish();
    EXPECT_THAT(blocks, SizeIs(2));
}

} // namespace
