#pragma once

#include <QColor>

#include <optional>

namespace orv {

class DefaultsStore;

/// How the subtitle window looks.
struct SubtitleAppearance {
    QColor background; ///< With its opacity.
    std::optional<QColor> border;
    QColor translation;
    QColor original; ///< The same colour, fainter.

    /// The user's choices as the store has them now.
    static SubtitleAppearance fromStore(const DefaultsStore& store);

    friend bool operator==(const SubtitleAppearance&, const SubtitleAppearance&) = default;
};

} // namespace orv
