#pragma once

#include <QHash>
#include <QString>

namespace orv {

/// A running application whose sound can be listened to.
struct RunningApp {
    QString bundleId; ///< Names the application across runs.
    QString name;     ///< For people.

    friend bool operator==(const RunningApp&, const RunningApp&) = default;
};

/// Hashed by the identifier alone.
inline size_t qHash(const RunningApp& app, size_t seed = 0) noexcept {
    return qHash(app.bundleId, seed);
}

} // namespace orv
