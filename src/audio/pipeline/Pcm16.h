#pragma once

#include <QByteArray>

#include <cstdint>
#include <span>

namespace orv {

/// One sample as signed 16-bit PCM: 1.0 and above become 32767, everything else is cut off at -1.0,
/// scaled by 32767 and truncated toward zero (so -1.0 is -32767). Infinities count as the limit on
/// their side, NaN as silence: every value has a defined result.
constexpr std::int16_t pcm16Sample(float sample) noexcept {
    const float known = sample == sample ? sample : 0.0F;
    const float below = known < 1.0F ? known : 1.0F;
    const float limited = below > -1.0F ? below : -1.0F;
    return static_cast<std::int16_t>(static_cast<std::int32_t>(limited * 32767.0F));
}

/// Writes `samples` as 16-bit PCM, little-endian, in order, without a header, to the
/// 2 * samples.size() bytes at `bytes`. Any alignment. Callable from any thread.
void writePcm16(std::span<const float> samples, char* bytes) noexcept;

/// Appends `samples` to `bytes` in the form of `writePcm16`. Does not allocate while the capacity
/// of `bytes` lasts.
void appendPcm16(QByteArray& bytes, std::span<const float> samples);

/// `samples` in the form of `writePcm16`.
QByteArray pcm16(std::span<const float> samples);

} // namespace orv
