#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orv {

/// The result of processing one captured buffer.
struct ProcessedBuffer {
    /// Gained and clamped to [-1, 1], as many as came in. Valid until the next buffer.
    std::span<const float> samples;
    float rms = 0;        ///< Of the gained samples before clamping; never NaN or infinite.
    float levelDb = 0;    ///< `rms` in dB, -80 at least.
    float meterLevel = 0; ///< 0 (-60 dB and below) to 1 (0 dB and above).
    float gain = 1;       ///< As it stands for the next buffer.
};

/// A level in dB; everything below 0.0001 counts as 0.0001, so -80 dB is the floor.
float decibels(float rms) noexcept;

/// Where a level stands on the meter: 0 at -60 dB and below, 1 at 0 dB and above.
float meterLevel(float levelDb) noexcept;

/// The gain after a buffer whose gained samples have this RMS: it moves by `smoothing` of the way
/// to what would bring the RMS to 0.1, and stays within [0.5, 3.0]. Buffers of RMS 0.01 and less
/// leave it alone, so that silence does not pump it up.
float adaptedGain(float gain, float rms, float smoothing) noexcept;

/// The arithmetic that every captured buffer goes through: scales, measures and clamps it, and lets
/// the gain follow the signal. Used on the capture thread; set up on another one while nothing is
/// captured. No system calls, and no allocation unless a buffer is larger than every one before it.
class SamplePipeline {
  public:
    /// `expectedSamples`: buffers up to this size never allocate.
    explicit SamplePipeline(std::size_t expectedSamples = 16384);

    /// Processes the next buffer of a run. Samples that are not finite count as silence.
    ProcessedBuffer process(std::span<const float> samples);

    float gain() const { return gain_; }

    /// Linear factor. A value that is not finite counts as 1.
    void setGain(float gain);

    bool autoGain() const { return autoGain_; }

    void setAutoGain(bool on) { autoGain_ = on; }

    /// Weight of a buffer's estimate in the new gain, 0..1.
    float autoGainSmoothing = 0.1F;
    /// Tells the RMS that auto-gain aims at. The rule in `adaptedGain` has the value built in: a
    /// change here alone changes nothing.
    float autoGainTarget = 0.1F;

  private:
    float gain_ = 1.0F;
    bool autoGain_ = false;
    std::vector<float> scratch_;
};

} // namespace orv
