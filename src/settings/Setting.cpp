#include "Setting.h"

#include "ThreadChecks.h"

namespace orv {

void AnySetting::keepIn(DefaultsStore& store) {
    ORV_ON_MAIN();
    if (keeping() != Keeping::Never) {
        store_ = &store;
    }
}

} // namespace orv
