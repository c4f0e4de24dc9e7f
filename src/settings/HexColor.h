#pragma once

#include <QColor>
#include <QString>

namespace orv {

/// An opaque sRGB colour from six hexadecimal digits with an optional leading "#"; white space
/// around it is ignored. Anything else yields `fallback`.
QColor colorFromHex(const QString& hexString, const QColor& fallback);

/// "#RRGGBB" in upper case, the components of the colour in sRGB; alpha is left out.
QString toHexString(const QColor& color);

} // namespace orv
