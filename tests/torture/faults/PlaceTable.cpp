#include "PlaceTable.h"

#include "Report.h"

#include <cstring>
#include <type_traits>

namespace faults {

static_assert(std::is_trivially_copyable_v<Place>);

void PlaceTable::note(const Place& place) {
    const std::uint64_t hash = place.hash();
    for (std::size_t step = 0; step < size; ++step) {
        Slot& slot = slots_[(hash + step) % size];
        std::uint64_t found = 0;
        if (slot.hash.compare_exchange_strong(found, hash)) {
            std::memcpy(slot.place.data(), &place, sizeof place);
            slot.isFilled.store(true, std::memory_order_release);
            found = hash;
        }
        if (found == hash) {
            ++slot.count;
            return;
        }
    }
}

void PlaceTable::tell() const {
    for (const Slot& slot : slots_) {
        if (slot.isFilled.load(std::memory_order_acquire)) {
            tellPlace(*reinterpret_cast<const Place*>(slot.place.data()), slot.count);
        }
    }
}

} // namespace faults
