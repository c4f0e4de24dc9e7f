#include "SampleRateConverter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace {

using orv::SampleRateConverter;

std::vector<float> sine(double frequency, double rate, std::size_t count) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double time = static_cast<double>(i) / rate;
        samples[i] = static_cast<float>(0.8 * std::sin(2 * std::numbers::pi * frequency * time));
    }
    return samples;
}

std::unique_ptr<SampleRateConverter> converter(double rate) {
    SampleRateConverter::Creation creation = SampleRateConverter::create(rate);
    EXPECT_NE(creation.converter, nullptr) << creation.error.toStdString();
    return std::move(creation.converter);
}

/// Converts `input` in buffers of `frames`.
std::vector<float> convertInBuffers(SampleRateConverter& target, const std::vector<float>& input,
                                    std::size_t frames) {
    std::vector<float> output;
    for (std::size_t at = 0; at < input.size(); at += frames) {
        const auto [samples, error] =
            target.convert(input.data() + at, std::min(frames, input.size() - at), 1);
        EXPECT_TRUE(error.isEmpty()) << error.toStdString();
        output.insert(output.end(), samples.begin(), samples.end());
    }
    return output;
}

TEST(SampleRateConverter, makesRoomForTheConvertedBufferAnd32Frames) {
    EXPECT_EQ(SampleRateConverter::outputCapacity(44100, 4096), 4490U);
    EXPECT_EQ(SampleRateConverter::outputCapacity(96000, 4096), 2080U);
    EXPECT_EQ(SampleRateConverter::outputCapacity(16000, 4096), 12320U);
    EXPECT_EQ(SampleRateConverter::outputCapacity(44100, 0), 32U);
}

TEST(SampleRateConverter, oneHertzOffNeedsNone) {
    EXPECT_FALSE(SampleRateConverter::isNeeded(48000));
    EXPECT_FALSE(SampleRateConverter::isNeeded(48001));
    EXPECT_FALSE(SampleRateConverter::isNeeded(47999));
    EXPECT_TRUE(SampleRateConverter::isNeeded(48001.5));
    EXPECT_TRUE(SampleRateConverter::isNeeded(44100));

    const SampleRateConverter::Creation creation = SampleRateConverter::create(48001);
    EXPECT_EQ(creation.converter, nullptr);
    EXPECT_TRUE(creation.error.isEmpty());
}

TEST(SampleRateConverter, aRateThatIsNoneIsAnError) {
    for (const double rate : {0.0, -44100.0, 1.0, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()}) {
        const SampleRateConverter::Creation creation = SampleRateConverter::create(rate);
        EXPECT_EQ(creation.converter, nullptr) << rate;
        EXPECT_FALSE(creation.error.isEmpty()) << rate;
    }
}

TEST(SampleRateConverter, buffersGiveTheSameSoundAsOnePiece) {
    const std::vector<float> input = sine(997, 44100, 132'300);
    const auto inBuffers = converter(44100);
    const auto inOne = converter(44100);
    const std::vector<float> pieces = convertInBuffers(*inBuffers, input, 4096);
    const std::vector<float> whole = convertInBuffers(*inOne, input, input.size());
    ASSERT_EQ(pieces.size(), whole.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        ASSERT_NEAR(pieces[i], whole[i], 1e-6) << "sample " << i;
    }
}

class EveryRate : public testing::TestWithParam<double> {};

TEST_P(EveryRate, aSineStaysTheSameSineWithoutDelayOrStep) {
    const double rate = GetParam();
    const auto seconds = std::size_t{2};
    const auto count = static_cast<std::size_t>(rate) * seconds;
    const auto target = converter(rate);
    const std::vector<float> output = convertInBuffers(*target, sine(997, rate, count), 4096);
    const std::vector<float> expected = sine(997, 48000, output.size());

    // What is missing is what the filter holds back: up to 25 ms, and up to 100 ms of a source so
    // slow that its filter is longer.
    const std::size_t heldBack = rate >= 44100 ? 1200 : 4800;
    EXPECT_LE(output.size(), 48000 * seconds);
    EXPECT_GE(output.size(), 48000 * seconds - heldBack);
    // The sine's abrupt start rings for a few milliseconds.
    for (std::size_t i = 2400; i < output.size(); ++i) {
        ASSERT_NEAR(output[i], expected[i], 2e-5) << "sample " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(SampleRateConverter, EveryRate,
                         testing::Values(8000.0, 16000.0, 22050.0, 44100.0, 88200.0, 96000.0,
                                         192000.0));

TEST(SampleRateConverter, takesChannelZeroOnly) {
    const std::vector<float> mono = sine(440, 44100, 40'960);
    std::vector<float> interleaved;
    for (const float sample : mono) {
        interleaved.insert(interleaved.end(), {sample, 0.9F, -0.9F});
    }
    const auto first = converter(44100);
    const auto second = converter(44100);
    for (std::size_t at = 0; at < mono.size(); at += 4096) {
        const auto expected = first->convert(mono.data() + at, 4096, 1).samples;
        const auto got = second->convert(interleaved.data() + 3 * at, 4096, 3).samples;
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), got.begin(), got.end()));
    }
}

TEST(SampleRateConverter, losesNoInputHoweverBuffersAreCut) {
    std::mt19937 random(11);
    std::uniform_int_distribution<std::size_t> size(0, 20'000);
    const auto target = converter(22050);
    const std::vector<float> input = sine(300, 22050, 441'000);
    std::vector<float> output;
    for (std::size_t at = 0; at < input.size();) {
        const std::size_t frames = std::min(size(random), input.size() - at);
        const auto samples = target->convert(input.data() + at, frames, 1).samples;
        output.insert(output.end(), samples.begin(), samples.end());
        at += frames;
    }
    EXPECT_GE(output.size(), 48000U * 20 - 4800);
    EXPECT_LE(output.size(), 48000U * 20);
    const std::vector<float> expected = sine(300, 48000, output.size());
    for (std::size_t i = 2400; i < output.size(); ++i) {
        ASSERT_NEAR(output[i], expected[i], 2e-5) << "sample " << i;
    }
}

TEST(SampleRateConverter, anEmptyBufferGivesNothing) {
    const auto target = converter(44100);
    const auto [samples, error] = target->convert(nullptr, 0, 1);
    EXPECT_TRUE(samples.empty());
    EXPECT_TRUE(error.isEmpty());
}

TEST(SampleRateConverter, samplesThatAreNotFiniteDoNotPoisonTheFilter) {
    const auto target = converter(44100);
    std::vector<float> input(4096, 0.25F);
    input[100] = std::numeric_limits<float>::quiet_NaN();
    input[200] = std::numeric_limits<float>::infinity();
    for (int i = 0; i < 20; ++i) {
        for (const float sample : target->convert(input.data(), input.size(), 1).samples) {
            ASSERT_TRUE(std::isfinite(sample));
        }
    }
}

TEST(SampleRateConverter, finishesWithWhatTheFilterHeldBack) {
    const std::vector<float> input = sine(997, 44100, 44'100);
    const auto target = converter(44100);
    std::vector<float> output = convertInBuffers(*target, input, 4096);
    EXPECT_LT(output.size(), 47'990U) << "nothing is held back";
    const auto [rest, error] = target->finish();
    ASSERT_TRUE(error.isEmpty()) << error.toStdString();
    output.insert(output.end(), rest.begin(), rest.end());
    EXPECT_NEAR(static_cast<double>(output.size()), 48'000, 2);
    // Up to its end the same sound, but for the filter's edge.
    const std::vector<float> expected = sine(997, 48000, 48'000);
    for (std::size_t i = 47'000; i < 47'900; ++i) {
        ASSERT_NEAR(output[i], expected[i], 0.01) << i;
    }
}

TEST(SampleRateConverter, finishesWithNothingBeforeTheFirstBuffer) {
    const auto [rest, error] = converter(96000)->finish();
    EXPECT_TRUE(error.isEmpty());
    EXPECT_TRUE(rest.empty());
}

} // namespace
