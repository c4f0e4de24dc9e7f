#pragma once

#include <unistd.h>

#include <utility>

namespace orv {

/// The one owner of an open file descriptor; closes it. Negative: none.
class UniqueFd {
  public:
    UniqueFd() = default;

    explicit UniqueFd(int number)
        : number_(number) {}

    ~UniqueFd() { reset(); }

    UniqueFd(UniqueFd&& other) noexcept
        : number_(std::exchange(other.number_, -1)) {}

    UniqueFd& operator=(UniqueFd&& other) noexcept {
        reset(std::exchange(other.number_, -1));
        return *this;
    }

    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    int get() const { return number_; }

    bool isOpen() const { return number_ >= 0; }

    void reset(int number = -1) {
        const int earlier = std::exchange(number_, number);
        if (earlier >= 0) {
            ::close(earlier);
        }
    }

  private:
    int number_ = -1;
};

} // namespace orv
