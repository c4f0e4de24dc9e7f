#include "Setting.h"

#include "ThreadChecks.h"

namespace orv {

void AnySetting::keepIn(DefaultsStore& store) {
    ORV_ON_MAIN();
    if (keeping() != Keeping::Never) {
        store_ = &store;
    }
}

void watchAll(const std::vector<const AnySetting*>& settings, QObject* context,
              const std::function<void()>& show) {
    ORV_ON_MAIN();
    for (const AnySetting* setting : settings) {
        QObject::connect(setting, &AnySetting::assigned, context, show);
    }
}

} // namespace orv
