#pragma once

#include <QString>

#include <cstddef>
#include <memory>
#include <span>

namespace orv {

/// A converter of one run's microphone buffers to 48 kHz mono float. One converter serves one
/// capture run: its filter state carries over from buffer to buffer. Belongs to the capture thread
/// once capturing has begun.
class SampleRateConverter {
  public:
    /// What `create` came to.
    struct Creation {
        std::unique_ptr<SampleRateConverter> converter; ///< Null: none is needed, or `error`.
        QString error;                                  ///< Why there is none; else empty.
    };

    /// What became of one buffer.
    struct Conversion {
        std::span<const float> samples; ///< At 48 kHz; may be empty. Valid until the next call.
        QString error;                  ///< Set when the buffer is lost; else empty.
    };

    virtual ~SampleRateConverter() = default;

    /// Whether a device at this rate (Hz) needs converting: when it is more than 1 Hz off 48 kHz.
    static bool isNeeded(double inputRate);

    /// A converter of very high quality from `inputRate` (Hz); none when none is needed.
    static Creation create(double inputRate);

    /// Frames to make room for when converting a buffer of `frames`: what it comes to at 48 kHz,
    /// and 32 to spare.
    static std::size_t outputCapacity(double inputRate, std::size_t frames);

    /// Converts the next buffer: `frames` samples of channel 0, `stride` apart. All of the input is
    /// taken up, whatever its size; samples that are not finite count as silence. The filter holds
    /// back some of the newest sound, so the first buffers give less than they are long. Allocates
    /// only when a buffer is larger than every one before it.
    virtual Conversion convert(const float* channel0, std::size_t frames, std::size_t stride) = 0;

    /// What the filter still holds back, after the last buffer. Nothing can be converted then.
    virtual Conversion finish() = 0;
};

} // namespace orv
