#include "SampleBlocks.h"

#include <QtGlobal>

#include <utility>

namespace orv {

namespace {

/// Two seconds of a microphone's buffers, which is more than ever waits for a queue that only
/// encodes.
constexpr std::size_t usualBlocks = 24;
constexpr std::size_t usualSamples = 4096;

} // namespace

SampleBlocks::SampleBlocks()
    : spares_(usualBlocks) {
    waiting_.reserve(usualBlocks);
    for (std::vector<float>& spare : spares_) {
        spare.reserve(usualSamples);
    }
}

void SampleBlocks::add(std::span<const float> samples) {
    std::vector<float> block;
    {
        const std::lock_guard lock(lock_);
        if (!spares_.empty()) {
            block = std::move(spares_.back());
            spares_.pop_back();
        }
    }
    block.assign(samples.begin(), samples.end());
    const std::lock_guard lock(lock_);
    waiting_.push_back(std::move(block));
}

std::vector<float> SampleBlocks::take() {
    const std::lock_guard lock(lock_);
    Q_ASSERT(!waiting_.empty());
    std::vector<float> block = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    return block;
}

void SampleBlocks::recycle(std::vector<float>&& used) {
    used.clear();
    const std::lock_guard lock(lock_);
    spares_.push_back(std::move(used));
}

} // namespace orv
