#pragma once

#include <unistd.h>

#include <utility>

namespace orv {

/// Owns one open file descriptor and closes it. Movable, so that it can be handed on.
class FileDescriptor {
  public:
    FileDescriptor() = default;

    /// Takes over `number`; a negative one is no descriptor.
    explicit FileDescriptor(int number)
        : number_(number) {}

    ~FileDescriptor() { reset(); }

    FileDescriptor(FileDescriptor&& other) noexcept
        : number_(std::exchange(other.number_, none)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            number_ = std::exchange(other.number_, none);
        }
        return *this;
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }

    int number() const { return number_; }

    void reset() {
        if (isOpen()) {
            ::close(std::exchange(number_, none));
        }
    }

  private:
    static constexpr int none = -1;
    int number_ = none;
};

} // namespace orv
