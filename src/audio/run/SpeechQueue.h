#pragma once

#include <QByteArray>

#include <chrono>
#include <deque>
#include <optional>

namespace orv {

/// Sound that waits for its turn at an engine. What has waited for too long is dropped, the oldest
/// first: subtitles of what was said long ago would keep back those of what is being said. It reads
/// no clock; `now` never goes back.
class SpeechQueue {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit SpeechQueue(std::chrono::milliseconds longestWait)
        : longestWait_(longestWait) {}

    void add(QByteArray pcm, TimePoint now);

    /// The oldest that still may go; nothing when nothing waits.
    std::optional<QByteArray> take(TimePoint now);

    bool isEmpty() const { return waiting_.empty(); }

    void clear() { waiting_.clear(); }

    /// How many bytes were dropped since `takeDropped`.
    qsizetype dropped() const { return dropped_; }

    qsizetype takeDropped();

  private:
    void dropLate(TimePoint now);

    struct Block {
        QByteArray pcm;
        TimePoint since;
    };

    const std::chrono::milliseconds longestWait_;
    std::deque<Block> waiting_;
    qsizetype dropped_ = 0;
};

} // namespace orv
