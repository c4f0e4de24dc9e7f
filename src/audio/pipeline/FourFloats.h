#pragma once

#include <QtEndian>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orv {

/// A vector of four floats, for the loops that every sample passes through. GCC by itself turns
/// neither a clamp with a defined result for NaN nor the narrowing to 16 bits into the
/// instructions made for them, and takes two to three times as long. This one is written for any
/// processor; see `FourFloats` for the one that is used.
class PlainFourFloats {
  public:
    static constexpr std::size_t count = 4;

    static PlainFourFloats all(float value) { return {value, value, value, value}; }

    static PlainFourFloats load(const float* from) { return {from[0], from[1], from[2], from[3]}; }

    void store(float* to) const { std::memcpy(to, values_.data(), sizeof values_); }

    friend PlainFourFloats operator*(const PlainFourFloats& a, const PlainFourFloats& b) {
        return {a.values_[0] * b.values_[0], a.values_[1] * b.values_[1],
                a.values_[2] * b.values_[2], a.values_[3] * b.values_[3]};
    }

    friend PlainFourFloats operator+(const PlainFourFloats& a, const PlainFourFloats& b) {
        return {a.values_[0] + b.values_[0], a.values_[1] + b.values_[1],
                a.values_[2] + b.values_[2], a.values_[3] + b.values_[3]};
    }

    /// Each within [-1, 1]; NaN becomes 1.
    PlainFourFloats clamped() const {
        return {clamped(values_[0]), clamped(values_[1]), clamped(values_[2]), clamped(values_[3])};
    }

    /// NaN becomes 0.
    PlainFourFloats withoutNan() const {
        return {known(values_[0]), known(values_[1]), known(values_[2]), known(values_[3])};
    }

    float sum() const { return (values_[0] + values_[1]) + (values_[2] + values_[3]); }

    /// Writes first `a`, then `b`, as 16-bit little-endian integers, truncated toward zero. All are
    /// within the range of 16 bits.
    static void storePcm16(const PlainFourFloats& a, const PlainFourFloats& b, char* to) {
        std::array<std::int16_t, 8> whole{};
        for (std::size_t i = 0; i < count; ++i) {
            whole[i] = qToLittleEndian(static_cast<std::int16_t>(a.values_[i]));
            whole[count + i] = qToLittleEndian(static_cast<std::int16_t>(b.values_[i]));
        }
        std::memcpy(to, whole.data(), sizeof whole);
    }

  private:
    PlainFourFloats(float a, float b, float c, float d)
        : values_{a, b, c, d} {}

    static float clamped(float value) {
        const float below = value < 1.0F ? value : 1.0F;
        return below > -1.0F ? below : -1.0F;
    }

    static float known(float value) { return value == value ? value : 0.0F; }

    std::array<float, count> values_;
};

#ifdef __SSE2__

/// The same vector, with the instructions that every x86-64 processor has.
class SseFourFloats {
  public:
    static constexpr std::size_t count = 4;

    static SseFourFloats all(float value) { return SseFourFloats(_mm_set1_ps(value)); }

    static SseFourFloats load(const float* from) { return SseFourFloats(_mm_loadu_ps(from)); }

    void store(float* to) const { _mm_storeu_ps(to, values_); }

    friend SseFourFloats operator*(SseFourFloats a, SseFourFloats b) {
        return SseFourFloats(_mm_mul_ps(a.values_, b.values_));
    }

    friend SseFourFloats operator+(SseFourFloats a, SseFourFloats b) {
        return SseFourFloats(_mm_add_ps(a.values_, b.values_));
    }

    SseFourFloats clamped() const {
        // The minimum of NaN and a number is the second operand.
        const __m128 below = _mm_min_ps(values_, _mm_set1_ps(1.0F));
        return SseFourFloats(_mm_max_ps(below, _mm_set1_ps(-1.0F)));
    }

    SseFourFloats withoutNan() const {
        return SseFourFloats(_mm_and_ps(values_, _mm_cmpord_ps(values_, values_)));
    }

    float sum() const {
        std::array<float, count> values{};
        _mm_storeu_ps(values.data(), values_);
        return (values[0] + values[1]) + (values[2] + values[3]);
    }

    static void storePcm16(SseFourFloats a, SseFourFloats b, char* to) {
        const __m128i whole =
            _mm_packs_epi32(_mm_cvttps_epi32(a.values_), _mm_cvttps_epi32(b.values_));
        std::memcpy(to, &whole, sizeof whole);
    }

  private:
    explicit SseFourFloats(__m128 values)
        : values_(values) {}

    __m128 values_;
};

using FourFloats = SseFourFloats;

#else

using FourFloats = PlainFourFloats;

#endif

} // namespace orv
