#include "SpeechQueue.h"

#include <utility>

namespace orv {

void SpeechQueue::add(QByteArray pcm, TimePoint now) {
    dropLate(now);
    waiting_.push_back({std::move(pcm), now});
}

std::optional<QByteArray> SpeechQueue::take(TimePoint now) {
    dropLate(now);
    if (waiting_.empty()) {
        return std::nullopt;
    }
    QByteArray pcm = std::move(waiting_.front().pcm);
    waiting_.pop_front();
    return pcm;
}

qsizetype SpeechQueue::takeDropped() {
    return std::exchange(dropped_, 0);
}

void SpeechQueue::dropLate(TimePoint now) {
    while (!waiting_.empty() && now - waiting_.front().since > longestWait_) {
        dropped_ += waiting_.front().pcm.size();
        waiting_.pop_front();
    }
}

} // namespace orv
