#pragma once

#include <cstddef>
#include <mutex>
#include <span>
#include <vector>

namespace orv {

/// The buffer of samples that wait to be chunked: 48 kHz mono, each in [-1, 1], in the order of
/// capture. Callable from any thread; the lock inside is held only to copy, count or swap.
///
/// Memory for the usual chunk is reserved at the start and used again: a taken chunk leaves with
/// its memory, spare memory takes its place, and `recycle` brings the chunk's memory back. As long
/// as chunks come back and none is longer than the reserve, nothing here allocates.
class SampleBuffer {
  public:
    /// The result of a conditional take.
    struct Taken {
        std::size_t count = 0;      ///< Samples there were, taken or not.
        std::vector<float> samples; ///< All of them, or empty when they stayed.
    };

    /// Thirty seconds: nearly four times the longest wait for a chunk while the link is up.
    static constexpr std::size_t defaultReserve = std::size_t{30} * 48000;

    /// Reserves room for `reservedSamples` three times: gathering, and two chunks on their way.
    explicit SampleBuffer(std::size_t reservedSamples = defaultReserve);

    /// Appends `samples` and returns how many there are now.
    std::size_t append(std::span<const float> samples);

    /// Takes everything if there are more than `bound` samples; else all of them stay.
    Taken takeIfMoreThan(std::size_t bound);

    /// Takes everything there is.
    std::vector<float> takeAll();

    /// Throws the samples away and keeps the memory.
    void clear();

    std::size_t size() const;

    /// Gives the memory of a taken chunk back. Its contents are dropped. Memory that is too small
    /// or not needed is freed.
    void recycle(std::vector<float>&& used);

  private:
    std::vector<float> takeLocked();

    const std::size_t reservedSamples_;
    mutable std::mutex bufferLock_;
    std::vector<float> audioBuffer_;
    std::vector<std::vector<float>> spares_; ///< Empty, each with the reserve.
};

} // namespace orv
