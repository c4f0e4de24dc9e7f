#pragma once

#include "Setting.h"

#include <QColor>

#include <vector>

namespace orv {

class SettingsList;

/// The user's choices for the look of the subtitles, in the window and on the page, as the two can
/// use them. What is stored and means nothing takes the default.
class OverlayDefaults {
  public:
    /// Opacity of the background, 0 to 1; a stored value beyond these is taken as the nearer one.
    static double opacityValue(const SettingsList& settings);

    /// The opaque colour that a setting names; its default when that is no colour of six
    /// hexadecimal digits.
    static QColor color(const Setting<QString>& setting);

    /// The settings that the look is made from.
    static std::vector<const AnySetting*> settings(const SettingsList& settings);
};

} // namespace orv
