#include "SamplePipeline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace orv {

namespace {

constexpr float targetRms = 0.1F;
constexpr float quietestRmsForAutoGain = 0.01F;
constexpr float smallestRms = 0.0001F;

// Independent sums, one per lane, let the compiler keep four vectors in flight; a block is short
// enough that single precision loses nothing in it.
constexpr std::size_t lanes = 16;
constexpr std::size_t blockSamples = 64 * lanes;

float clampedSample(float sample) noexcept {
    const float below = sample < 1.0F ? sample : 1.0F;
    return below > -1.0F ? below : -1.0F;
}

/// Writes the gained, clamped samples to `out` and returns the sum of the squares of the gained
/// ones. The sum is not finite exactly when a sample is not, or when single precision is too small
/// for a square; `out` is of no use then.
double scaleAndClamp(std::span<const float> samples, float gain, float* __restrict out) noexcept {
    const float* __restrict in = samples.data();
    const std::size_t count = samples.size();
    const std::size_t vectorEnd = count - count % lanes;
    double total = 0;
    std::size_t i = 0;
    while (i < vectorEnd) {
        const std::size_t blockEnd = std::min(vectorEnd, i + blockSamples);
        std::array<float, lanes> sums{};
        for (; i < blockEnd; i += lanes) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const float gained = in[i + lane] * gain;
                sums[lane] += gained * gained;
                out[i + lane] = clampedSample(gained);
            }
        }
        for (const float sum : sums) {
            total += static_cast<double>(sum);
        }
    }
    for (; i < count; ++i) {
        const float gained = in[i] * gain;
        total += static_cast<double>(gained * gained);
        out[i] = clampedSample(gained);
    }
    return total;
}

/// The same for buffers with samples that are not finite or absurdly large: slower, and every
/// result is finite.
double scaleAndClampUntrusted(std::span<const float> samples, float gain, float* out) noexcept {
    double total = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const float sample = std::isfinite(samples[i]) ? samples[i] : 0.0F;
        const double gained = static_cast<double>(sample) * static_cast<double>(gain);
        total += gained * gained;
        out[i] = static_cast<float>(std::clamp(gained, -1.0, 1.0));
    }
    return total;
}

} // namespace

float decibels(float rms) noexcept {
    return 20.0F * std::log10(std::max(rms, smallestRms));
}

float meterLevel(float levelDb) noexcept {
    return std::clamp((levelDb + 60.0F) / 60.0F, 0.0F, 1.0F);
}

float adaptedGain(float gain, float rms, float smoothing) noexcept {
    if (!(rms > quietestRmsForAutoGain)) {
        return gain;
    }
    const float desired = targetRms / rms;
    const float next = desired * gain * smoothing + gain * (1.0F - smoothing);
    return std::clamp(next, 0.5F, 3.0F);
}

SamplePipeline::SamplePipeline(std::size_t expectedSamples)
    : scratch_(expectedSamples) {}

void SamplePipeline::setGain(float gain) {
    gain_ = std::isfinite(gain) ? gain : 1.0F;
}

ProcessedBuffer SamplePipeline::process(std::span<const float> samples) {
    const std::size_t count = samples.size();
    if (scratch_.size() < count) {
        scratch_.resize(count);
    }
    double sumOfSquares = scaleAndClamp(samples, gain_, scratch_.data());
    if (!std::isfinite(sumOfSquares)) {
        sumOfSquares = scaleAndClampUntrusted(samples, gain_, scratch_.data());
    }
    const double rms =
        std::sqrt(sumOfSquares / static_cast<double>(std::max<std::size_t>(count, 1)));

    ProcessedBuffer result;
    result.samples = std::span<const float>(scratch_).first(count);
    result.rms =
        static_cast<float>(std::min(rms, static_cast<double>(std::numeric_limits<float>::max())));
    result.levelDb = decibels(result.rms);
    result.meterLevel = meterLevel(result.levelDb);
    if (autoGain_) {
        gain_ = adaptedGain(gain_, result.rms, autoGainSmoothing);
    }
    result.gain = gain_;
    return result;
}

} // namespace orv
