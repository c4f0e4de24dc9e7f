#pragma once

namespace orv {

/// The level meter of the screen as its two values, level and peak, fed once per captured buffer.
/// Lives on the main thread.
class LevelMeter {
  public:
    /// Takes up the meter value (0..1) of one buffer: the level is smoothed, the peak jumps up and
    /// falls by a twentieth per buffer.
    void apply(float level);

    /// Both values back to 0.
    void reset();

    float audioLevel() const { return audioLevel_; } ///< 0..1, smoothed.

    float peakLevel() const { return peakLevel_; } ///< 0..1, peak hold.

  private:
    float audioLevel_ = 0;
    float peakLevel_ = 0;
};

} // namespace orv
