#pragma once

#include "FourFloats.h"
#include "Pcm16.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace orv::sampleLoops {

// The loops that every captured sample passes through, over a kind of four floats (see
// FourFloats.h). `Pcm16` and `SamplePipeline` use them with the fastest kind there is.

/// See `writePcm16`.
template <typename Four>
void writePcm16(std::span<const float> samples, char* bytes) noexcept {
    constexpr std::size_t step = 2 * Four::count;
    const Four scale = Four::all(32767.0F);
    const std::size_t count = samples.size();
    std::size_t i = 0;
    for (; i + step <= count; i += step) {
        const Four first = Four::load(samples.data() + i).withoutNan().clamped();
        const Four second = Four::load(samples.data() + i + Four::count).withoutNan().clamped();
        Four::storePcm16(first * scale, second * scale, bytes + 2 * i);
    }
    for (; i < count; ++i) {
        const std::int16_t value = qToLittleEndian(pcm16Sample(samples[i]));
        std::memcpy(bytes + 2 * i, &value, sizeof value);
    }
}

/// Writes the gained, clamped samples to `out` and returns the sum of the squares of the gained
/// ones. The sum is not finite exactly when a sample is not, or when single precision is too small
/// for a square; `out` is of no use then.
template <typename Four>
double scaleAndClamp(std::span<const float> samples, float gain, float* out) noexcept {
    // Four sums side by side keep the processor from waiting for each addition; a block is short
    // enough that single precision loses nothing in it.
    constexpr std::size_t sumCount = 4;
    constexpr std::size_t step = sumCount * Four::count;
    constexpr std::size_t blockSamples = 64 * step;
    const Four factor = Four::all(gain);
    const float* const in = samples.data();
    const std::size_t count = samples.size();
    const std::size_t vectorEnd = count - count % step;
    double total = 0;
    std::size_t i = 0;
    while (i < vectorEnd) {
        const std::size_t blockEnd = std::min(vectorEnd, i + blockSamples);
        const Four zero = Four::all(0.0F);
        std::array<Four, sumCount> sums{zero, zero, zero, zero};
        for (; i < blockEnd; i += step) {
            for (std::size_t k = 0; k < sumCount; ++k) {
                const Four gained = Four::load(in + i + k * Four::count) * factor;
                sums[k] = sums[k] + gained * gained;
                gained.clamped().store(out + i + k * Four::count);
            }
        }
        total += static_cast<double>(((sums[0] + sums[1]) + (sums[2] + sums[3])).sum());
    }
    for (; i < count; ++i) {
        const float gained = in[i] * gain;
        total += static_cast<double>(gained * gained);
        out[i] = std::clamp(gained, -1.0F, 1.0F);
    }
    return total;
}

} // namespace orv::sampleLoops
