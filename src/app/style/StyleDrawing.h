#pragma once

#include <QIcon>
#include <QPainter>
#include <QStyleOption>

namespace orv {

// What the drawing of all controls shares.

/// A filled rounded rectangle with a border of one logical pixel inside `area` (none when `border`
/// is invalid).
void drawRounded(QPainter* painter, const QRectF& area, qreal corner, const QColor& fill,
                 const QColor& border = {});

/// The ring that shows the focus: two pixels wide, inside `area`.
void drawRing(QPainter* painter, const QRectF& area, qreal corner, const QColor& color);

/// An arrow head that points down (or up), in the middle of `area`.
void drawChevron(QPainter* painter, const QRectF& area, const QColor& color, bool up = false);

/// The tick of a chosen entry, in the middle of `area`.
void drawTick(QPainter* painter, const QRectF& area, const QColor& color);

/// One line of text, its mnemonic marks left out. The painter's own font alone decides where its
/// base line is: signs that come from other fonts (emoji) do not move it.
void drawLine(QPainter* painter, const QRect& area, Qt::Alignment alignment, const QString& text);

/// The same in the middle of `area`, with the picture (emoji) that `text` begins with, if it does,
/// lighter than its font has it: such pictures are made for light ground and vanish on dark.
void drawLineOnDark(QPainter* painter, const QRect& area, const QString& text);

/// `icon` in the middle of `area`, sharp on `painter`'s device. A mask takes the colour.
void drawIcon(QPainter* painter, const QRect& area, const QIcon& icon, const QColor& color,
              bool enabled);

/// Whether `widget` is a list or menu that stands above a window.
bool isPopup(const QWidget* widget);

/// Whether the control has the focus and the keyboard brought it there.
bool showsFocus(const QStyleOption& option);

bool isEnabled(const QStyleOption& option);
bool isHovered(const QStyleOption& option);
bool isPressed(const QStyleOption& option);

} // namespace orv
