#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <cstdint>
#include <optional>

namespace orv {

/// Hands on sound in blocks that a service takes, and no faster than it was spoken, whatever has
/// gathered meanwhile. What has waited for too long is left out, the oldest first. It reads no
/// clock; `now` never goes back.
class PcmPacer {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::milliseconds shortestBlock{50};
    static constexpr std::chrono::milliseconds usualBlock{100};
    static constexpr std::chrono::milliseconds longestWait{5000};
    /// How far it may be ahead of what was spoken: the ends of buffers come unevenly.
    static constexpr std::chrono::milliseconds lead{250};

    /// Of 16-bit mono PCM.
    explicit PcmPacer(std::int64_t sampleRate)
        : sampleRate_(sampleRate) {}

    void add(const QByteArray& pcm);

    /// The blocks that may go now.
    QList<QByteArray> due(TimePoint now);

    /// How long until the next one may; nothing while nothing waits that is long enough.
    std::optional<std::chrono::milliseconds> untilNext(TimePoint now) const;

    /// No sound comes any more: what is left goes as before, its last block filled up with silence
    /// to the shortest one.
    void finish();

    bool isEmpty() const { return waiting_.isEmpty(); }

    /// How much was left out since this was asked last.
    std::chrono::milliseconds takeDropped();

  private:
    std::int64_t bytesOf(std::chrono::milliseconds time) const;
    std::chrono::milliseconds timeOf(std::int64_t bytes) const;
    std::chrono::milliseconds allowance(TimePoint now) const;
    QByteArray takeBlock();

    const std::int64_t sampleRate_;
    QByteArray waiting_;
    std::optional<TimePoint> begin_;       ///< When the sound that was handed on would have begun.
    std::chrono::milliseconds handedOn_{}; ///< Since then.
    std::chrono::milliseconds dropped_{};
};

} // namespace orv
