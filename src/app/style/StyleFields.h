#pragma once

#include "Theme.h"

class QPainter;
class QRect;
class QStyleOption;
class QStyleOptionComboBox;
class QStyleOptionSpinBox;

namespace orv {

// Line edits, choices and spin boxes.

/// From a field's edge to its text, logical pixels.
inline constexpr int fieldPadding = 9;

/// Width of the part of a choice or spin box that holds its arrows, logical pixels.
inline constexpr int arrowWidth = 24;

/// The ground and border of a field; it shows the focus however that came.
void drawField(const Theme& theme, const QStyleOption& option, QPainter* painter);

void drawComboBox(const Theme& theme, const QStyleOptionComboBox& option, QPainter* painter);
void drawComboBoxLabel(const Theme& theme, const QStyleOptionComboBox& option, const QRect& area,
                       QPainter* painter);

/// `up` and `down` are the places of the two arrows.
void drawSpinBox(const Theme& theme, const QStyleOptionSpinBox& option, const QRect& up,
                 const QRect& down, QPainter* painter);

} // namespace orv
