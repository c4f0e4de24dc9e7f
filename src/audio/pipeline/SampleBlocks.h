#pragma once

#include <mutex>
#include <span>
#include <vector>

namespace orv {

/// A queue of captured buffers, from the capture thread to another one, each a block of its own, in
/// the order of capture. Callable from any thread; the lock inside is held only to swap
/// blocks. Memory is used again: as long as blocks come back and none is longer than any before,
/// and no more are under way than ever before, nothing here allocates.
class SampleBlocks {
  public:
    SampleBlocks();

    /// Appends a copy of `samples`. On one thread at a time.
    void add(std::span<const float> samples);

    /// The oldest block. There must be one.
    std::vector<float> take();

    /// Gives the memory of a block back. Its contents are dropped.
    void recycle(std::vector<float>&& used);

  private:
    std::mutex lock_;
    std::vector<std::vector<float>> waiting_; ///< Oldest first; hardly ever more than one.
    std::vector<std::vector<float>> spares_;
};

} // namespace orv
