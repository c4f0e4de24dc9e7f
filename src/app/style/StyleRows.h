#pragma once

#include "Theme.h"

class QPainter;
class QStyleOption;
class QStyleOptionMenuItem;
class QStyleOptionViewItem;

namespace orv {

// Rows of lists and menus, and the frames round them.

/// The ground of a row that is chosen or under the mouse; nothing for any other.
void drawRow(const Theme& theme, const QStyleOptionViewItem& option, QPainter* painter);

void drawMenuItem(const Theme& theme, const QStyleOptionMenuItem& option, QPainter* painter);

/// The ground of a menu or an open list: a card with square corners, since a window has no others
/// on a desktop that does not blend.
void drawMenuGround(const Theme& theme, const QStyleOption& option, QPainter* painter);

} // namespace orv
