#include "StyleFields.h"

#include "PaintScope.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStyleOptionSpinBox>

namespace orv {

void drawField(const Theme& theme, const QStyleOption& option, QPainter* painter) {
    const PaintScope scope(painter);
    const QRectF area(option.rect);
    drawRounded(painter, area, radius::control, isEnabled(option) ? theme.field : theme.window,
                isEnabled(option) ? theme.controlBorder : theme.cardBorder);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        drawRing(painter, area, radius::control, theme.accentText);
    }
}

void drawComboBox(const Theme& theme, const QStyleOptionComboBox& option, QPainter* painter) {
    if (option.editable) {
        drawField(theme, option, painter);
    } else {
        const PaintScope scope(painter);
        const QRectF area(option.rect);
        const bool open = option.state.testFlag(QStyle::State_On);
        const QColor fill = !isEnabled(option)          ? theme.window
                            : isPressed(option) || open ? theme.controlPressed
                            : isHovered(option)         ? theme.controlHover
                                                        : theme.control;
        drawRounded(painter, area, radius::control, fill,
                    isEnabled(option) ? theme.controlBorder : theme.cardBorder);
        if (showsFocus(option)) {
            drawRing(painter, area, radius::control, theme.accentText);
        }
    }
    const PaintScope scope(painter);
    const QRect arrow =
        QStyle::visualRect(option.direction, option.rect,
                           QRect(option.rect.right() - arrowWidth + 1, option.rect.y(),
                                 arrowWidth - 2, option.rect.height()));
    drawChevron(painter, QRectF(arrow), isEnabled(option) ? theme.quietText : theme.disabledText);
}

void drawComboBoxLabel(const Theme& theme, const QStyleOptionComboBox& option, const QRect& area,
                       QPainter* painter) {
    if (option.editable) {
        return;
    }
    const PaintScope scope(painter);
    QRect place = area;
    const QColor color = isEnabled(option) ? theme.text : theme.disabledText;
    if (!option.currentIcon.isNull()) {
        const QRect icon = QStyle::alignedRect(option.direction, Qt::AlignLeft | Qt::AlignVCenter,
                                               option.iconSize, place);
        drawIcon(painter, icon, option.currentIcon, color, isEnabled(option));
        const int taken = option.iconSize.width() + space::tiny;
        place.adjust(option.direction == Qt::LeftToRight ? taken : 0, 0,
                     option.direction == Qt::LeftToRight ? 0 : -taken, 0);
    }
    painter->setPen(color);
    drawLine(painter, place, QStyle::visualAlignment(option.direction, Qt::AlignLeft),
             option.fontMetrics.elidedText(option.currentText, Qt::ElideRight, place.width()));
}

void drawSpinBox(const Theme& theme, const QStyleOptionSpinBox& option, const QRect& up,
                 const QRect& down, QPainter* painter) {
    drawField(theme, option, painter);
    const PaintScope scope(painter);
    const auto color = [&](QAbstractSpinBox::StepEnabledFlag step, QStyle::SubControl part) {
        if (!isEnabled(option) || !option.stepEnabled.testFlag(step)) {
            return theme.disabledText;
        }
        return option.activeSubControls.testFlag(part) ? theme.text : theme.quietText;
    };
    drawChevron(painter, QRectF(up), color(QAbstractSpinBox::StepUpEnabled, QStyle::SC_SpinBoxUp),
                true);
    drawChevron(painter, QRectF(down),
                color(QAbstractSpinBox::StepDownEnabled, QStyle::SC_SpinBoxDown));
}

} // namespace orv
