#include "OverlayLook.h"

#include "DefaultsStore.h"
#include "HexColor.h"
#include "OverlayKeys.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QColor storedColor(const DefaultsStore& store, const OverlayColor& color) {
    const QString hex = store.string(color.key).value_or(color.fallback);
    return colorFromHex(hex, colorFromHex(color.fallback, Qt::black));
}

} // namespace

OverlayLook OverlayLook::from(const DefaultsStore& store) {
    OverlayLook look;
    look.background = storedColor(store, overlayBackground());
    look.background.setAlphaF(static_cast<float>(std::clamp(
        store.doubleValue(overlayOpacityKey()).value_or(overlayOpacityDefault), 0.0, 1.0)));
    look.text = storedColor(store, overlayText());
    look.border = storedColor(store, overlayBorder());
    look.hasBorder = store.boolean(overlayBorderEnabledKey()).value_or(true);
    return look;
}

} // namespace orv
