#include "StyleRows.h"

#include "PaintScope.h"
#include "StyleButtons.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QStyle>
#include <QStyleOptionMenuItem>
#include <QStyleOptionViewItem>

namespace orv {

void drawRow(const Theme& theme, const QStyleOptionViewItem& option, QPainter* painter) {
    const bool chosen = option.state.testFlag(QStyle::State_Selected);
    if (!chosen && !isHovered(option)) {
        return;
    }
    const PaintScope scope(painter);
    QColor ground = theme.accentSoft;
    if (!chosen) {
        ground = theme.text;
        ground.setAlphaF(0.05F);
    }
    drawRounded(painter, QRectF(option.rect).adjusted(1, 0, -1, 0), radius::item, ground);
}

void drawMenuGround(const Theme& theme, const QStyleOption& option, QPainter* painter) {
    painter->fillRect(option.rect, theme.controlBorder);
    painter->fillRect(option.rect.adjusted(1, 1, -1, -1), theme.card);
}

void drawMenuItem(const Theme& theme, const QStyleOptionMenuItem& option, QPainter* painter) {
    const PaintScope scope(painter);
    const QRect area = option.rect.adjusted(space::tiny, 0, -space::tiny, 0);
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        painter->fillRect(QRect(area.x(), area.center().y(), area.width(), 1), theme.cardBorder);
        return;
    }
    const bool enabled = isEnabled(option);
    if (enabled && option.state.testFlag(QStyle::State_Selected)) {
        drawRounded(painter, QRectF(area), radius::item, theme.accentSoft);
    }
    const int side = buttonIconSide;
    QRect mark(area.x() + space::small, area.y() + (area.height() - side) / 2, side, side);
    mark = QStyle::visualRect(option.direction, area, mark);
    const QColor color = enabled ? theme.text : theme.disabledText;
    if (!option.icon.isNull()) {
        drawIcon(painter, mark, option.icon, color, enabled);
    } else if (option.checked) {
        drawTick(painter, QRectF(mark), theme.accentText);
    }
    const bool marks = option.maxIconWidth > 0 || option.menuHasCheckableItems;
    const int left = space::small + (marks ? side + space::small : 0);
    const QRect text =
        QStyle::visualRect(option.direction, area, area.adjusted(left, 0, -space::medium, 0));
    const auto tab = option.text.indexOf(QLatin1Char('\t'));
    painter->setFont(option.font);
    painter->setPen(color);
    drawLine(painter, text, QStyle::visualAlignment(option.direction, Qt::AlignLeft),
             option.text.left(tab));
    if (tab >= 0) {
        painter->setPen(enabled ? theme.quietText : theme.disabledText);
        drawLine(painter, text, QStyle::visualAlignment(option.direction, Qt::AlignRight),
                 option.text.mid(tab + 1));
    }
}

} // namespace orv
