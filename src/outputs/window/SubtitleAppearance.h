#pragma once

#include <QColor>

#include <optional>

namespace orv {

class SettingsList;

/// How the subtitle window looks.
struct SubtitleAppearance {
    QColor background; ///< With its opacity.
    std::optional<QColor> border;
    QColor translation;
    QColor original; ///< The same colour, fainter.

    /// The user's choices as they are now.
    static SubtitleAppearance fromSettings(const SettingsList& settings);

    friend bool operator==(const SubtitleAppearance&, const SubtitleAppearance&) = default;
};

} // namespace orv
