#include "PcmPacer.h"

#include <algorithm>
#include <utility>

namespace orv {

namespace {

constexpr std::int64_t sampleSize = 2;

} // namespace

std::int64_t PcmPacer::bytesOf(std::chrono::milliseconds time) const {
    return time.count() * sampleRate_ / 1000 * sampleSize;
}

std::chrono::milliseconds PcmPacer::timeOf(std::int64_t bytes) const {
    return std::chrono::milliseconds(bytes / sampleSize * 1000 / sampleRate_);
}

void PcmPacer::add(const QByteArray& pcm) {
    waiting_ += pcm;
    const std::int64_t most = bytesOf(longestWait);
    if (waiting_.size() > most) {
        const auto tooMuch = static_cast<qsizetype>(waiting_.size() - most);
        waiting_.remove(0, tooMuch);
        dropped_ += timeOf(tooMuch);
    }
}

/// How much may be handed on now.
std::chrono::milliseconds PcmPacer::allowance(TimePoint now) const {
    if (!begin_) {
        return lead;
    }
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(now - *begin_);
    return since + lead - handedOn_;
}

QByteArray PcmPacer::takeBlock() {
    const auto size = std::min<qsizetype>(waiting_.size(), bytesOf(usualBlock));
    QByteArray block = waiting_.first(size);
    waiting_.remove(0, size);
    handedOn_ += timeOf(size);
    return block;
}

QList<QByteArray> PcmPacer::due(TimePoint now) {
    QList<QByteArray> blocks;
    // A pause is no credit for going faster afterwards.
    if (!begin_ || allowance(now) > lead) {
        begin_ = now;
        handedOn_ = {};
    }
    while (waiting_.size() >= bytesOf(shortestBlock) &&
           allowance(now) >= std::min(usualBlock, timeOf(waiting_.size()))) {
        blocks.append(takeBlock());
    }
    return blocks;
}

std::optional<std::chrono::milliseconds> PcmPacer::untilNext(TimePoint now) const {
    if (waiting_.size() < bytesOf(shortestBlock)) {
        return std::nullopt;
    }
    const auto missing = std::min(usualBlock, timeOf(waiting_.size())) - allowance(now);
    return std::max(missing, std::chrono::milliseconds(0));
}

void PcmPacer::finish() {
    const auto shortest = static_cast<qsizetype>(bytesOf(shortestBlock));
    const auto usual = static_cast<qsizetype>(bytesOf(usualBlock));
    const qsizetype last = waiting_.size() % usual;
    if (last > 0 && last < shortest) {
        waiting_.append(shortest - last, '\0');
    }
}

std::chrono::milliseconds PcmPacer::takeDropped() {
    return std::exchange(dropped_, {});
}

} // namespace orv
