#pragma once

#include <QHash>
#include <QString>

namespace orv {

/// An input device.
struct AudioDevice {
    QString id;   ///< The platform's lasting, unique identifier.
    QString name; ///< For people.

    friend bool operator==(const AudioDevice&, const AudioDevice&) = default;
};

inline size_t qHash(const AudioDevice& device, size_t seed = 0) noexcept {
    return qHashMulti(seed, device.id, device.name);
}

} // namespace orv
