#include "SamplePipeline.h"

#include "SampleLoops.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orv {

namespace {

constexpr float targetRms = 0.1F;
constexpr float quietestRmsForAutoGain = 0.01F;
constexpr float smallestRms = 0.0001F;

/// What `sampleLoops::scaleAndClamp` does, for buffers with samples that are not finite or absurdly
/// large: slower, and every result is finite.
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
    double sumOfSquares = sampleLoops::scaleAndClamp<FourFloats>(samples, gain_, scratch_.data());
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
