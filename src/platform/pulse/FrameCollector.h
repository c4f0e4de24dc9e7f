#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace orv {

/// Gathers the first channel of interleaved pieces of any size into buffers of one size. Allocates
/// only when it is constructed.
class FrameCollector {
  public:
    FrameCollector(std::size_t framesPerBuffer, std::size_t channels)
        : buffer_(framesPerBuffer)
        , channels_(channels) {}

    /// `samples` is null for silence. `emit` gets the pointer to each full buffer; it is valid
    /// during that call.
    template <typename Emit>
    void push(const float* samples, std::size_t frames, Emit&& emit) {
        while (frames > 0) {
            const std::size_t count = std::min(frames, buffer_.size() - filled_);
            for (std::size_t i = 0; i < count; ++i) {
                buffer_[filled_ + i] = samples ? samples[i * channels_] : 0.0F;
            }
            filled_ += count;
            frames -= count;
            if (samples) {
                samples += count * channels_;
            }
            if (filled_ == buffer_.size()) {
                filled_ = 0;
                emit(std::as_const(buffer_).data());
            }
        }
    }

    /// `emit` gets what has gathered since the last full buffer, and how much that is, if there is
    /// any.
    template <typename Emit>
    void flush(Emit&& emit) {
        if (const std::size_t rest = std::exchange(filled_, 0); rest > 0) {
            emit(std::as_const(buffer_).data(), rest);
        }
    }

  private:
    std::vector<float> buffer_;
    std::size_t channels_;
    std::size_t filled_ = 0;
};

} // namespace orv
