#pragma once

#include <QRect>
#include <QSize>
#include <QStyle>

#include <optional>

class QStyleOption;
class QStyleOptionComplex;

namespace orv {

// The sizes and habits of the style; no value where the basic style's own holds.

std::optional<int> ownMetric(QStyle::PixelMetric metric);
std::optional<int> ownHint(QStyle::StyleHint hint);

/// The size of a control whose content asks for `contents`.
std::optional<QSize> ownSize(QStyle::ContentsType type, const QStyleOption* option,
                             const QSize& contents);

/// The place of a part of a control with several.
std::optional<QRect> ownPart(QStyle::ComplexControl control, const QStyleOptionComplex* option,
                             QStyle::SubControl part);

} // namespace orv
