#pragma once

#include <cstddef>
#include <cstdint>

namespace orv::bench {

/// The least that gain, level, clamp and 16-bit conversion of one buffer can cost: one loop by
/// hand, four samples at a time, straight from the captured samples to PCM. It keeps nothing,
/// checks nothing and is no more than a measuring stick. Returns the sum of squares.
float handFused(const float* samples, std::size_t count, float gain, std::int16_t* pcm) noexcept;

} // namespace orv::bench
