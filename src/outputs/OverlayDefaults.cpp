#include "OverlayDefaults.h"

#include "DefaultsStore.h"
#include "HexColor.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QColor storedColor(const DefaultsStore& store, const QString& key, QRgb fallback) {
    const QColor color = QColor::fromRgb(fallback);
    return colorFromHex(store.string(key).value_or(QString()), color);
}

} // namespace

bool OverlayDefaults::borderOn(const DefaultsStore& store) {
    return store.boolean(u"overlayBorderEnabled"_s).value_or(true);
}

double OverlayDefaults::opacityValue(const DefaultsStore& store) {
    return std::clamp(store.doubleValue(u"overlayOpacity"_s).value_or(0.85), 0.0, 1.0);
}

QColor OverlayDefaults::backgroundColor(const DefaultsStore& store) {
    return storedColor(store, u"overlayBgColor"_s, 0x90EE90);
}

QColor OverlayDefaults::borderColor(const DefaultsStore& store) {
    return storedColor(store, u"overlayBorderColor"_s, 0x2E7D32);
}

QColor OverlayDefaults::textColor(const DefaultsStore& store) {
    return storedColor(store, u"overlayTextColor"_s, 0x000000);
}

} // namespace orv
