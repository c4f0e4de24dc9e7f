#pragma once

#include <QColor>

namespace orv {

class DefaultsStore;

/// How subtitles look, as the user has chosen it.
struct OverlayLook {
    QColor background; ///< With its opacity.
    QColor text;
    QColor border;
    bool hasBorder = true;

    static OverlayLook from(const DefaultsStore& store);
};

} // namespace orv
