#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <span>
#include <vector>

namespace orv {

/// Mixes any number of stereo streams into blocks of 20 ms at 48 kHz and keeps silent blocks coming
/// at the pace of the clock while no stream delivers. It is told the time and knows no threads.
/// Allocates when a stream is added, never for a piece or a block.
class BlockMixer {
  public:
    using Time = std::chrono::steady_clock::time_point;
    /// Samples per channel of a block.
    static constexpr std::size_t blockFrames = 960;
    static constexpr std::chrono::milliseconds blockDuration{20};
    /// A stream that has delivered nothing for so long does not hold up the others any more.
    static constexpr std::chrono::milliseconds patience{250};
    /// After a longer standstill of the machine or of the program, the silence that was missed is
    /// not made up for.
    static constexpr std::chrono::milliseconds longestStandstill{1000};

    /// Planar: `blockFrames` samples of the left channel, then as many of the right. Valid during
    /// the call.
    using Emit = std::function<void(std::span<const float> block)>;

    BlockMixer(Time start, Emit emit);

    /// `id` names the stream in later calls.
    void addStream(std::uint32_t id);
    /// What the stream has left is still mixed in.
    void removeStream(std::uint32_t id);

    /// Takes interleaved stereo samples of a stream; null is silence.
    void push(std::uint32_t id, const float* samples, std::size_t frames, Time now);

    /// Emits every block that is due.
    void advance(Time now);

    /// Emits what the streams have left, the last block filled up with silence.
    void finish();

  private:
    struct Stream {
        std::uint32_t id = 0;
        std::vector<float> ring; ///< Interleaved.
        std::size_t first = 0;   ///< Index of the oldest frame.
        std::size_t frames = 0;
        Time lastPush;
        bool hasDelivered = false;
        bool ended = false;
    };

    static void append(Stream& stream, const float* samples, std::size_t frames);
    bool hasSound() const;
    void mixInto(Stream& stream);
    void emitBlock();

    Emit emit_;
    Time coveredUntil_; ///< Up to here blocks have been emitted.
    std::list<Stream> streams_;
    std::vector<float> block_;
};

} // namespace orv
