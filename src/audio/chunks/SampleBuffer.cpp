#include "SampleBuffer.h"

#include <algorithm>
#include <utility>

namespace orv {

namespace {

constexpr std::size_t spareCount = 2;

} // namespace

SampleBuffer::SampleBuffer(std::size_t reservedSamples)
    : reservedSamples_(reservedSamples) {
    audioBuffer_.reserve(reservedSamples_);
    spares_.resize(spareCount);
    for (std::vector<float>& spare : spares_) {
        spare.reserve(reservedSamples_);
    }
}

SampleBuffer::Appended SampleBuffer::append(std::span<const float> samples) {
    const std::lock_guard lock(bufferLock_);
    Appended appended;
    if (audioBuffer_.size() + samples.size() > longestChunk) {
        const std::size_t room = longestChunk - std::min(samples.size(), longestChunk);
        const std::size_t excess = audioBuffer_.size() - std::min(room, audioBuffer_.size());
        const std::size_t leaving = std::min(std::max(excess, dropped), audioBuffer_.size());
        audioBuffer_.erase(audioBuffer_.begin(),
                           audioBuffer_.begin() + static_cast<std::ptrdiff_t>(leaving));
        samples = samples.last(std::min(samples.size(), longestChunk));
        appended.hasDropped = !std::exchange(hasDropped_, true);
    }
    audioBuffer_.insert(audioBuffer_.end(), samples.begin(), samples.end());
    appended.total = audioBuffer_.size();
    return appended;
}

SampleBuffer::Taken SampleBuffer::takeIfMoreThan(std::size_t bound) {
    const std::lock_guard lock(bufferLock_);
    Taken taken;
    taken.count = audioBuffer_.size();
    if (taken.count > bound) {
        taken.samples = takeLocked();
    }
    return taken;
}

std::vector<float> SampleBuffer::takeAll() {
    const std::lock_guard lock(bufferLock_);
    return takeLocked();
}

std::vector<float> SampleBuffer::takeLocked() {
    hasDropped_ = false;
    std::vector<float> next;
    if (spares_.empty()) {
        next.reserve(reservedSamples_);
    } else {
        next = std::move(spares_.back());
        spares_.pop_back();
    }
    return std::exchange(audioBuffer_, std::move(next));
}

void SampleBuffer::clear() {
    // Freed after the lock is released.
    std::vector<float> memory;
    const std::lock_guard lock(bufferLock_);
    if (isWorthKeeping(audioBuffer_)) {
        audioBuffer_.clear();
        hasDropped_ = false;
    } else {
        memory = takeLocked();
    }
}

bool SampleBuffer::isWorthKeeping(const std::vector<float>& memory) const {
    return memory.capacity() >= reservedSamples_ && memory.capacity() <= 4 * reservedSamples_;
}

std::size_t SampleBuffer::size() const {
    const std::lock_guard lock(bufferLock_);
    return audioBuffer_.size();
}

void SampleBuffer::recycle(std::vector<float>&& used) {
    // Memory that does not go back is freed by this one's end, after the lock is released.
    std::vector<float> memory = std::move(used);
    memory.clear();
    // What grew far beyond the reserve while the link was down is not worth keeping.
    if (!isWorthKeeping(memory)) {
        return;
    }
    const std::lock_guard lock(bufferLock_);
    if (spares_.size() < spareCount) {
        spares_.push_back(std::move(memory));
    }
}

} // namespace orv
