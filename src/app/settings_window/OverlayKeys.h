#pragma once

#include <QString>

namespace orv {

/// A colour of the subtitles: its key in the store and what it is without one, in hexadecimal.
struct OverlayColor {
    QString key;
    QString fallback;
};

inline OverlayColor overlayBackground() {
    return {QStringLiteral("overlayBgColor"), QStringLiteral("#90EE90")};
}

inline OverlayColor overlayText() {
    return {QStringLiteral("overlayTextColor"), QStringLiteral("#000000")};
}

inline OverlayColor overlayBorder() {
    return {QStringLiteral("overlayBorderColor"), QStringLiteral("#2E7D32")};
}

inline QString overlayBorderEnabledKey() {
    return QStringLiteral("overlayBorderEnabled");
}

inline QString overlayOpacityKey() {
    return QStringLiteral("overlayOpacity");
}

inline constexpr double overlayOpacityDefault = 0.85;

} // namespace orv
