#pragma once

#include <cstddef>
#include <mutex>
#include <span>
#include <vector>

namespace orv {

/// The buffer of samples that wait to be chunked: 48 kHz mono, each in [-1, 1], in the order of
/// capture. Callable from any thread; the lock inside is held only to copy, count or swap.
///
/// What nobody takes is bounded: of more than `longestChunk` samples the newest ones stay.
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

    /// As many as one message can carry: 16 MB of base64 with 16 bits a sample hold 6.29 million,
    /// a bit more than two minutes.
    static constexpr std::size_t longestChunk = 6'200'000;

    /// How much of the oldest goes at a time when there is too much: ten seconds, so that the rest
    /// is not moved for every buffer.
    static constexpr std::size_t dropped = std::size_t{10} * 48000;

    /// Reserves room for `reservedSamples` three times: gathering, and two chunks on their way.
    explicit SampleBuffer(std::size_t reservedSamples = defaultReserve);

    /// What an append came to.
    struct Appended {
        std::size_t total = 0;   ///< Samples there are now.
        bool hasDropped = false; ///< The oldest had to go, for the first time since the last take.
    };

    /// Appends `samples`.
    Appended append(std::span<const float> samples);

    /// Takes everything if there are more than `bound` samples; else all of them stay.
    Taken takeIfMoreThan(std::size_t bound);

    /// Takes everything there is.
    std::vector<float> takeAll();

    /// Throws the samples away, and with them memory that is far more than the reserve.
    void clear();

    std::size_t size() const;

    /// Gives the memory of a taken chunk back. Its contents are dropped. Memory that is too small
    /// or not needed is freed.
    void recycle(std::vector<float>&& used);

  private:
    std::vector<float> takeLocked();
    bool isWorthKeeping(const std::vector<float>& memory) const;

    const std::size_t reservedSamples_;
    mutable std::mutex bufferLock_;
    std::vector<float> audioBuffer_;
    bool hasDropped_ = false;                ///< Since the last take.
    std::vector<std::vector<float>> spares_; ///< Empty, each with the reserve.
};

} // namespace orv
