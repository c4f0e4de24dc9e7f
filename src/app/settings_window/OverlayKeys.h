#pragma once

#include "OverlayDefaults.h"

#include <QColor>
#include <QString>

namespace orv {

/// A colour of the subtitles: the key it is written under, and how it is read.
struct OverlayColor {
    QString key;
    QColor (*read)(const DefaultsStore& store);
};

inline OverlayColor overlayBackground() {
    return {QStringLiteral("overlayBgColor"), OverlayDefaults::backgroundColor};
}

inline OverlayColor overlayText() {
    return {QStringLiteral("overlayTextColor"), OverlayDefaults::textColor};
}

inline OverlayColor overlayBorder() {
    return {QStringLiteral("overlayBorderColor"), OverlayDefaults::borderColor};
}

inline QString overlayBorderEnabledKey() {
    return QStringLiteral("overlayBorderEnabled");
}

inline QString overlayOpacityKey() {
    return QStringLiteral("overlayOpacity");
}

} // namespace orv
