#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace orv {

/// What becomes of a setting's value in the store.
enum class Keeping {
    Never,       ///< Not in the store: the setting starts anew with every launch.
    WrittenBack, ///< Written with every assignment, and at load when a value was taken over: what
                 ///< was only registered becomes the user's own.
    OnAssignment ///< Written with every assignment; loading writes nothing.
};

/// Where a setting is made. In the order of the documentation.
enum class SettingPlace { General, Engines, Whisper, Panel };

/// What the documentation says of a setting; without `what` it has no row there.
struct SettingNote {
    const char* what = nullptr;                 ///< What is chosen.
    SettingPlace place = SettingPlace::General; ///< The tab of the settings window, or the panel.
    const char* control = nullptr;              ///< The control's name in English.
    const char* fallback = nullptr; ///< What holds without a choice, when the default says it not.
};

/// A setting's value for users who never chose one, registered with the store before the settings
/// are loaded. A loaded setting takes it for a stored one.
template <typename T>
struct Registered {
    int position = 0; ///< In the order of registration, from 1.
    T value = {};
};

/// The declaration of one setting, which says everything about it once: the list of settings loads,
/// writes, registers and documents by it.
template <typename T>
struct SettingDeclaration {
    QString key = {}; ///< In the store; empty for a setting that is never kept.
    T initial = {};   ///< The value when nothing is stored or registered.
    std::optional<Registered<T>> registered = {};
    /// Whether a stored value is taken over at load. One of another type never is.
    bool (*takes)(const T& stored) = [](const T& /*stored*/) { return true; };
    Keeping keeping = Keeping::WrittenBack;
    SettingNote note = {};
};

// Which stored values are taken.
inline bool isNotEmpty(const QString& stored) {
    return !stored.isEmpty();
}

inline bool isPort(const std::int64_t& stored) {
    return stored >= 1;
}

template <typename T>
bool isPositive(const T& stored) {
    return stored > 0;
}

template <typename T>
bool isNegative(const T& stored) {
    return stored < 0;
}

} // namespace orv
