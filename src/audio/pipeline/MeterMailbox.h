#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace orv {

/// A ring of meter values, one for each captured buffer, on their way from the capture thread to
/// the main thread without a lock, an allocation or a system call. One thread posts, one other
/// thread drains.
///
/// The main thread drains it about thirty times a second, and buffers come ten to a hundred times
/// a second: it is full only when the main thread stood still for seconds. Values that do not fit
/// then are dropped, which the meter shows for a tenth of a second at most.
class MeterMailbox {
  public:
    static constexpr std::size_t capacity = 256;

    /// Leaves the meter value of one buffer. False when it was dropped.
    bool post(float level) noexcept {
        const std::size_t end = posted_.load(std::memory_order_relaxed);
        if (end - drained_.load(std::memory_order_acquire) == capacity) {
            return false;
        }
        levels_[end % capacity] = level;
        posted_.store(end + 1, std::memory_order_release);
        return true;
    }

    /// Calls `take` with each value that was posted before, in order. Returns whether there was
    /// any.
    template <typename Take>
    bool drain(Take&& take) {
        std::size_t next = drained_.load(std::memory_order_relaxed);
        const std::size_t end = posted_.load(std::memory_order_acquire);
        const bool any = next != end;
        for (; next != end; ++next) {
            take(levels_[next % capacity]);
        }
        drained_.store(next, std::memory_order_release);
        return any;
    }

  private:
    std::array<float, capacity> levels_{};
    std::atomic<std::size_t> posted_ = 0;
    std::atomic<std::size_t> drained_ = 0;
};

} // namespace orv
