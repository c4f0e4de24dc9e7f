#include "StyleBars.h"

#include "PaintScope.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QStyle>
#include <QStyleOptionProgressBar>
#include <QStyleOptionSlider>
#include <QStyleOptionTab>

#include <algorithm>

namespace orv {

namespace {

constexpr qreal grooveHeight = 4;
constexpr int shortestHandle = 24;

QRectF turned(const QRectF& area, bool turn) {
    return turn ? area.transposed() : area;
}

} // namespace

void drawSlider(const Theme& theme, const QStyleOptionSlider& option, const QRect& handle,
                QPainter* painter) {
    const PaintScope scope(painter);
    const bool horizontal = option.orientation == Qt::Horizontal;
    const QRectF area(option.rect);
    const QPointF knob = QRectF(handle).center();
    QRectF groove =
        turned(QRectF(0, 0, horizontal ? area.width() : area.height(), grooveHeight), !horizontal);
    groove.moveCenter(area.center());
    const QColor ground = theme.dark ? theme.controlBorder : theme.controlPressed;
    drawRounded(painter, groove, grooveHeight / 2, ground);
    QRectF filled = groove;
    if (horizontal) {
        option.upsideDown ? filled.setLeft(knob.x()) : filled.setRight(knob.x());
    } else {
        option.upsideDown ? filled.setTop(knob.y()) : filled.setBottom(knob.y());
    }
    const bool enabled = isEnabled(option);
    drawRounded(painter, filled, grooveHeight / 2, enabled ? theme.accent : theme.switchOff);
    QRectF circle(0, 0, knobSide, knobSide);
    circle.moveCenter(knob);
    if (showsFocus(option)) {
        drawRounded(painter, circle, knobSide / 2.0, theme.accentText);
        circle.adjust(2, 2, -2, -2);
        drawRounded(painter, circle, circle.width() / 2, theme.knob);
        return;
    }
    circle.adjust(1, 1, -1, -1);
    drawRounded(painter, circle, circle.width() / 2, enabled ? theme.knob : ground,
                enabled ? theme.switchOff : theme.controlBorder);
}

QRect scrollBarHandle(const QStyleOptionSlider& option) {
    const bool horizontal = option.orientation == Qt::Horizontal;
    const int room = horizontal ? option.rect.width() : option.rect.height();
    const qint64 range = qint64(option.maximum) - option.minimum;
    int length = room;
    if (range > 0) {
        length = static_cast<int>(room * qint64(option.pageStep) / (range + option.pageStep));
        length = std::min(std::max(length, shortestHandle), room);
    }
    const int start = QStyle::sliderPositionFromValue(
        option.minimum, option.maximum, option.sliderPosition, room - length, option.upsideDown);
    return horizontal
               ? QRect(option.rect.x() + start, option.rect.y(), length, option.rect.height())
               : QRect(option.rect.x(), option.rect.y() + start, option.rect.width(), length);
}

void drawScrollBar(const Theme& theme, const QStyleOptionSlider& option, QPainter* painter) {
    if (option.maximum <= option.minimum) {
        return;
    }
    const PaintScope scope(painter);
    const bool active = isHovered(option) || isPressed(option);
    const qreal inset = active ? 1.5 : 2.5;
    const QRectF handle = QRectF(scrollBarHandle(option)).adjusted(inset, inset, -inset, -inset);
    QColor color = theme.switchOff;
    color.setAlphaF(active ? 1.0F : 0.55F);
    drawRounded(painter, handle, std::min(handle.width(), handle.height()) / 2, color);
}

void drawProgressBar(const Theme& theme, const QStyleOptionProgressBar& option, qreal phase,
                     QPainter* painter) {
    const PaintScope scope(painter);
    QRectF groove(0, 0, option.rect.width(), 6);
    groove.moveCenter(QRectF(option.rect).center());
    drawRounded(painter, groove, 3, theme.dark ? theme.controlBorder : theme.controlPressed);
    QRectF filled = groove;
    if (option.maximum <= option.minimum) {
        filled.setWidth(groove.width() * 0.3);
        filled.moveLeft(groove.left() + (groove.width() - filled.width()) * phase);
    } else {
        const qreal share =
            qreal(option.progress - option.minimum) / qreal(option.maximum - option.minimum);
        if (share <= 0) {
            return;
        }
        filled.setWidth(std::max(groove.height(), groove.width() * share));
    }
    drawRounded(painter, filled, 3, theme.accent);
}

void drawTab(const Theme& theme, const QStyleOptionTab& option, QPainter* painter) {
    const PaintScope scope(painter);
    const QRectF area(option.rect);
    const bool chosen = option.state.testFlag(QStyle::State_Selected);
    if (isHovered(option) && !chosen) {
        QColor ground = theme.text;
        ground.setAlphaF(0.05F);
        drawRounded(painter, area.adjusted(1, 3, -1, -5), radius::control, ground);
    }
    if (chosen) {
        drawRounded(painter,
                    QRectF(area.left() + space::small, area.bottom() - 2,
                           area.width() - 2 * space::small, 2.5),
                    1.25, theme.accentText);
    }
    if (showsFocus(option)) {
        drawRing(painter, area.adjusted(1, 3, -1, -5), radius::control, theme.accentText);
    }
}

void drawTabLabel(const Theme& theme, const QStyleOptionTab& option, QPainter* painter) {
    const PaintScope scope(painter);
    const bool chosen = option.state.testFlag(QStyle::State_Selected);
    painter->setPen(!isEnabled(option) ? theme.disabledText
                    : chosen           ? theme.accentText
                                       : theme.quietText);
    drawLine(painter, option.rect.adjusted(0, 0, 0, -2), Qt::AlignCenter, option.text);
}

} // namespace orv
