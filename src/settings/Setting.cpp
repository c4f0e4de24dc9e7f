#include "Setting.h"

namespace orv {

void AnySetting::keepIn(DefaultsStore& store) {
    if (keeping() != Keeping::Never) {
        store_ = &store;
    }
}

void watchAll(const std::vector<const AnySetting*>& settings, QObject* context,
              const std::function<void()>& show) {
    for (const AnySetting* setting : settings) {
        QObject::connect(setting, &AnySetting::assigned, context, show);
    }
}

} // namespace orv
