#include "SamplePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace {

using orv::ProcessedBuffer;
using orv::SamplePipeline;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

std::vector<float> copy(const ProcessedBuffer& buffer) {
    return {buffer.samples.begin(), buffer.samples.end()};
}

std::vector<float> noise(std::size_t count, unsigned seed, float amplitude) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-amplitude, amplitude);
    std::vector<float> samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return sample(random); });
    return samples;
}

TEST(SamplePipeline, anEmptyBufferIsAtTheFloorAndLeavesTheGainAlone) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    pipeline.setGain(1.7F);
    const ProcessedBuffer result = pipeline.process({});
    EXPECT_TRUE(result.samples.empty());
    EXPECT_EQ(result.rms, 0.0F);
    EXPECT_EQ(result.levelDb, -80.0F);
    EXPECT_EQ(result.meterLevel, 0.0F);
    EXPECT_EQ(pipeline.gain(), 1.7F);
}

TEST(SamplePipeline, keepsSamplesUnchangedAtGainOne) {
    SamplePipeline pipeline;
    const std::vector<float> samples = noise(4096, 1, 1.0F);
    EXPECT_EQ(copy(pipeline.process(samples)), samples);
}

TEST(SamplePipeline, appliesTheGainAndClamps) {
    SamplePipeline pipeline;
    pipeline.setGain(3.0F);
    const std::array<float, 6> samples{0.5F, -0.5F, 0.25F, -0.25F, 0.0F, -1.0F};
    EXPECT_EQ(copy(pipeline.process(samples)),
              (std::vector<float>{1.0F, -1.0F, 0.75F, -0.75F, 0.0F, -1.0F}));
}

TEST(SamplePipeline, measuresTheGainedSamplesBeforeClamping) {
    SamplePipeline pipeline;
    pipeline.setGain(3.0F);
    const std::vector<float> samples(1000, 0.5F);
    const ProcessedBuffer result = pipeline.process(samples);
    EXPECT_FLOAT_EQ(result.rms, 1.5F);
    EXPECT_NEAR(result.levelDb, 3.5218, 0.001);
    EXPECT_EQ(result.meterLevel, 1.0F);
}

TEST(SamplePipeline, measuresAFullScaleSineAtMinusThreeDecibels) {
    std::vector<float> samples(4800);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(
            std::sin(2 * std::numbers::pi * 1000.0 * static_cast<double>(i) / 48000.0));
    }
    SamplePipeline pipeline;
    const ProcessedBuffer result = pipeline.process(samples);
    EXPECT_NEAR(result.rms, 0.70711, 1e-5);
    EXPECT_NEAR(result.levelDb, -3.0103, 1e-3);
    EXPECT_NEAR(result.meterLevel, 0.949828, 1e-5);
}

TEST(SamplePipeline, everyLengthGivesWhatASimpleLoopGives) {
    for (std::size_t count = 1; count < 2100; count += count < 80 ? 1 : 97) {
        const std::vector<float> samples = noise(count, static_cast<unsigned>(count), 0.9F);
        SamplePipeline pipeline;
        pipeline.setGain(1.5F);
        const ProcessedBuffer result = pipeline.process(samples);
        double sum = 0;
        std::vector<float> expected;
        for (const float sample : samples) {
            const float gained = sample * 1.5F;
            sum += static_cast<double>(gained) * static_cast<double>(gained);
            expected.push_back(std::clamp(gained, -1.0F, 1.0F));
        }
        ASSERT_EQ(copy(result), expected) << count;
        ASSERT_NEAR(result.rms, std::sqrt(sum / static_cast<double>(count)), 1e-6) << count;
    }
}

TEST(SamplePipeline, aBufferLargerThanExpectedIsProcessedWhole) {
    SamplePipeline pipeline(16);
    const std::vector<float> samples = noise(100'003, 3, 1.0F);
    EXPECT_EQ(copy(pipeline.process(samples)), samples);
}

TEST(SamplePipeline, levelHasItsFloorAtMinus80AndTheMeterAtMinus60) {
    EXPECT_EQ(orv::decibels(0.0F), -80.0F);
    EXPECT_EQ(orv::decibels(0.0001F), -80.0F);
    EXPECT_FLOAT_EQ(orv::decibels(0.001F), -60.0F);
    EXPECT_FLOAT_EQ(orv::decibels(0.1F), -20.0F);
    EXPECT_EQ(orv::decibels(1.0F), 0.0F);

    EXPECT_EQ(orv::meterLevel(-80.0F), 0.0F);
    EXPECT_EQ(orv::meterLevel(-60.0F), 0.0F);
    EXPECT_FLOAT_EQ(orv::meterLevel(-30.0F), 0.5F);
    EXPECT_EQ(orv::meterLevel(0.0F), 1.0F);
    EXPECT_EQ(orv::meterLevel(12.0F), 1.0F);
}

TEST(SamplePipeline, autoGainLowersFullScaleByAtMostATenthOfTheGapPerBuffer) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    const std::vector<float> full(4096, 1.0F);
    const ProcessedBuffer first = pipeline.process(full);
    EXPECT_FLOAT_EQ(first.rms, 1.0F);
    float before = first.gain;
    EXPECT_FLOAT_EQ(before, 0.91F); // A tenth of the way from 1 to 0.1.
    for (int i = 0; i < 200; ++i) {
        const float gain = pipeline.process(full).gain;
        ASSERT_LE(gain, before);
        ASSERT_GE(gain, before - 0.1F * (before - 0.1F) - 1e-6F);
        ASSERT_GE(gain, 0.5F);
        before = gain;
    }
    EXPECT_EQ(before, 0.5F);
}

TEST(SamplePipeline, aNewGainCountsFromTheNextBuffer) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    const std::vector<float> samples(1024, 0.5F);
    const ProcessedBuffer first = pipeline.process(samples);
    EXPECT_EQ(first.samples[0], 0.5F);
    EXPECT_NE(first.gain, 1.0F);
    const float gain = first.gain;
    EXPECT_EQ(pipeline.process(samples).samples[0], 0.5F * gain);
}

TEST(SamplePipeline, autoGainRaisesAQuietSignalUpToThree) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    const std::vector<float> quiet(1024, 0.011F);
    EXPECT_GT(pipeline.process(quiet).gain, 1.0F);
    for (int i = 0; i < 100; ++i) {
        ASSERT_LE(pipeline.process(quiet).gain, 3.0F);
    }
    EXPECT_EQ(pipeline.gain(), 3.0F);
}

TEST(SamplePipeline, nearSilenceLeavesTheGainAlone) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    pipeline.setGain(2.0F);
    pipeline.process(std::vector<float>(4096, 0.004F)); // RMS 0.008 after the gain.
    EXPECT_EQ(pipeline.gain(), 2.0F);
    EXPECT_EQ(orv::adaptedGain(2.0F, 0.01F, 0.1F), 2.0F); // The bound itself counts as silence.
    EXPECT_NE(orv::adaptedGain(2.0F, std::nextafter(0.01F, 1.0F), 0.1F), 2.0F);
}

TEST(SamplePipeline, withoutAutoGainTheGainStays) {
    SamplePipeline pipeline;
    pipeline.setGain(5.0F);
    EXPECT_EQ(pipeline.process(std::vector<float>(4096, 1.0F)).gain, 5.0F);
    EXPECT_EQ(pipeline.gain(), 5.0F);
}

TEST(SamplePipeline, theTargetFieldOnlyDocuments) {
    SamplePipeline documented;
    SamplePipeline changed;
    changed.autoGainTarget = 0.9F;
    documented.setAutoGain(true);
    changed.setAutoGain(true);
    const std::vector<float> samples = noise(4096, 5, 0.3F);
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(documented.process(samples).gain, changed.process(samples).gain);
    }
}

TEST(SamplePipeline, theSmoothingFieldWeighsTheEstimate) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    pipeline.autoGainSmoothing = 0.5F;
    EXPECT_FLOAT_EQ(pipeline.process(std::vector<float>(4096, 1.0F)).gain, 0.55F);
}

TEST(SamplePipeline, samplesThatAreNotFiniteBecomeSilenceAndPoisonNothing) {
    for (const float bad : {nan, -nan, infinity, -infinity}) {
        for (const std::size_t at : {std::size_t{0}, std::size_t{500}, std::size_t{1002}}) {
            SamplePipeline pipeline;
            pipeline.setAutoGain(true);
            std::vector<float> samples(1003, 0.5F);
            samples[at] = bad;
            const ProcessedBuffer result = pipeline.process(samples);
            EXPECT_EQ(result.samples[at], 0.0F);
            EXPECT_EQ(result.samples[(at + 1) % 1003], 0.5F);
            EXPECT_NEAR(result.rms, 0.5 * std::sqrt(1002.0 / 1003.0), 1e-6);
            EXPECT_GT(result.gain, 0.5F);
            EXPECT_LT(result.gain, 1.0F);
        }
    }
}

TEST(SamplePipeline, hugeFiniteSamplesAreClampedAndTheLevelStaysFinite) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    pipeline.setGain(3.0F);
    constexpr float huge = std::numeric_limits<float>::max();
    const ProcessedBuffer result = pipeline.process(std::array{huge, -huge, 0.1F});
    EXPECT_EQ(copy(result), (std::vector<float>{1.0F, -1.0F, 0.1F * 3.0F}));
    EXPECT_TRUE(std::isfinite(result.rms));
    EXPECT_TRUE(std::isfinite(result.levelDb));
    EXPECT_EQ(result.meterLevel, 1.0F);
    EXPECT_FLOAT_EQ(result.gain, 2.7F);
}

TEST(SamplePipeline, aGainThatIsNotFiniteCountsAsOne) {
    SamplePipeline pipeline;
    pipeline.setGain(nan);
    EXPECT_EQ(pipeline.gain(), 1.0F);
    pipeline.setGain(infinity);
    EXPECT_EQ(pipeline.gain(), 1.0F);
}

// Computed once by hand from the rules, for an input that meets every rule.
TEST(SamplePipeline, goldenBuffers) {
    SamplePipeline pipeline;
    pipeline.setAutoGain(true);
    pipeline.setGain(2.0F);
    const std::array<float, 4> samples{0.6F, -0.6F, 0.3F, -0.3F};

    // Gained 1.2, -1.2, 0.6, -0.6: mean square 0.9; 0.1/0.948683*2*0.1 + 2*0.9 = 1.821082.
    const ProcessedBuffer first = pipeline.process(samples);
    EXPECT_EQ(copy(first), (std::vector<float>{1.0F, -1.0F, 0.6F, -0.6F}));
    EXPECT_NEAR(first.rms, 0.9486833, 1e-6);
    EXPECT_NEAR(first.levelDb, -0.4575749, 1e-5);
    EXPECT_NEAR(first.meterLevel, 0.9923738, 1e-6);
    EXPECT_NEAR(first.gain, 1.8210819, 1e-6);

    // Gained by 1.8210819: mean square 0.225 * 3.3163391 = 0.7461763; RMS 0.8638150;
    // 0.1/0.8638150*1.8210819*0.1 + 1.8210819*0.9 = 1.6600556.
    const ProcessedBuffer second = pipeline.process(samples);
    EXPECT_NEAR(second.samples[0], 1.0, 0);
    EXPECT_NEAR(second.samples[2], 0.5463246, 1e-6);
    EXPECT_NEAR(second.rms, 0.8638150, 1e-6);
    EXPECT_NEAR(second.gain, 1.6600556, 1e-6);
}

} // namespace
