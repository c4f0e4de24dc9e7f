#pragma once

#include "Place.h"

#include <array>
#include <atomic>

namespace faults {

/// Which places there are, and how often each was called. Any thread may note; nothing waits, and
/// no memory is asked for.
class PlaceTable {
  public:
    void note(const Place& place);

    /// Writes a line for each place into the report.
    void tell() const;

  private:
    struct Slot {
        std::atomic<std::uint64_t> hash = 0;
        std::atomic<std::uint64_t> count = 0;
        std::atomic<bool> isFilled = false;
        alignas(Place) std::array<std::byte, sizeof(Place)> place = {};
    };

    static constexpr std::size_t size = 8192;

    std::array<Slot, size> slots_ = {};
};

} // namespace faults
