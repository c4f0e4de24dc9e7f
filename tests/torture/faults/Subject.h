#pragma once

#include "Request.h"

#include <array>

namespace faults {

/// What a call is about, in a few words: "file", "socket inet stream nonblocking", "to create".
/// Calls about things that never fail on a real system have no subject: descriptors that only wake
/// somebody, and devices.
class Subject {
  public:
    explicit Subject(const Request& request);

    /// False for what never fails.
    bool canFail() const { return canFail_; }

    const char* words() const { return words_.data(); }

  private:
    void describe(int descriptor);
    void describeSocket(int descriptor);
    void add(const char* word);

    std::array<char, 48> words_ = {};
    bool canFail_ = true;
};

} // namespace faults
