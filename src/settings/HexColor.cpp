#include "HexColor.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

bool isHexDigit(QChar character) {
    const char16_t unit = character.unicode();
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') ||
           (unit >= u'A' && unit <= u'F');
}

int eightBits(float component) {
    return std::clamp(static_cast<int>(std::lround(component * 255.0F)), 0, 255);
}

} // namespace

QColor colorFromHex(const QString& hexString, const QColor& fallback) {
    QString digits = hexString.trimmed();
    if (digits.startsWith(u'#')) {
        digits.remove(0, 1);
    }
    if (digits.size() != 6 || !std::all_of(digits.cbegin(), digits.cend(), isHexDigit)) {
        return fallback;
    }
    return QColor::fromRgb(digits.toUInt(nullptr, 16));
}

QString toHexString(const QColor& color) {
    const QColor rgb = color.toRgb();
    const int number =
        (eightBits(rgb.redF()) << 16) | (eightBits(rgb.greenF()) << 8) | eightBits(rgb.blueF());
    return u'#' + QString::number(number, 16).toUpper().rightJustified(6, u'0');
}

} // namespace orv
