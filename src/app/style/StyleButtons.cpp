#include "StyleButtons.h"

#include "PaintScope.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QFontMetrics>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionToolButton>

#include <algorithm>

namespace orv {

namespace {

constexpr int buttonPadding = 12;
constexpr int narrowestButton = 64;
constexpr int iconGap = 6;
constexpr int tallButton = 38; ///< From this height on corners are rounder.
constexpr qreal ringRoom = 3;  ///< Of a solid control that has the focus: the ring and a gap.

ButtonKind shownKind(const QStyleOptionButton& option, ButtonKind kind) {
    const bool isDefault = option.features.testFlag(QStyleOptionButton::DefaultButton);
    return kind == ButtonKind::Plain && isDefault ? ButtonKind::Primary : kind;
}

struct Ground {
    QColor fill;
    QColor border = {};
};

QColor veil(const Theme& theme, float strength) {
    QColor color = theme.text;
    color.setAlphaF(strength);
    return color;
}

Ground primaryGround(const QStyleOption& option, const Theme& theme) {
    if (!isEnabled(option)) {
        return {theme.dark ? theme.control : theme.track};
    }
    return {isPressed(option)   ? theme.accentPressed
            : isHovered(option) ? theme.accentHover
                                : theme.accent};
}

Ground dangerGround(const QStyleOption& option, const Theme& theme) {
    if (!isEnabled(option)) {
        return {theme.window, theme.cardBorder};
    }
    return {isPressed(option)   ? theme.dangerPressed
            : isHovered(option) ? theme.dangerHover
                                : theme.danger,
            theme.dangerBorder};
}

Ground plainGround(const QStyleOption& option, const Theme& theme) {
    if (!isEnabled(option)) {
        return {theme.window, theme.cardBorder};
    }
    const bool down = isPressed(option) || option.state.testFlag(QStyle::State_On);
    return {down                ? theme.controlPressed
            : isHovered(option) ? theme.controlHover
                                : theme.control,
            theme.controlBorder};
}

Ground groundOf(const QStyleOption& option, const Theme& theme, ButtonKind kind) {
    switch (kind) {
    case ButtonKind::Primary:
        return primaryGround(option, theme);
    case ButtonKind::Danger:
        return dangerGround(option, theme);
    case ButtonKind::Quiet:
        return {isPressed(option)   ? veil(theme, 0.13F)
                : isHovered(option) ? veil(theme, 0.07F)
                                    : QColor(Qt::transparent)};
    case ButtonKind::Segment:
        if (option.state.testFlag(QStyle::State_On)) {
            return {theme.segment, theme.dark ? QColor() : theme.controlBorder};
        }
        return {isHovered(option) ? veil(theme, 0.05F) : QColor(Qt::transparent)};
    case ButtonKind::Plain:
        break;
    }
    return plainGround(option, theme);
}

QColor labelColor(const QStyleOption& option, const Theme& theme, ButtonKind kind) {
    if (!isEnabled(option)) {
        return theme.disabledText;
    }
    switch (kind) {
    case ButtonKind::Primary:
        return theme.onAccent;
    case ButtonKind::Danger:
        return theme.onDanger;
    case ButtonKind::Segment:
        return option.state.testFlag(QStyle::State_On) ? theme.text : theme.quietText;
    case ButtonKind::Plain:
    case ButtonKind::Quiet:
        break;
    }
    return theme.text;
}

void drawGround(const Theme& theme, const QStyleOption& option, ButtonKind kind,
                QPainter* painter) {
    const PaintScope scope(painter);
    const Ground ground = groundOf(option, theme, kind);
    const bool solid = kind == ButtonKind::Primary;
    QRectF area(option.rect);
    const int corner = option.rect.height() >= tallButton ? radius::tall : radius::control;
    if (showsFocus(option) && solid) {
        drawRing(painter, area, corner + 1, theme.accentText);
        area.adjust(ringRoom, ringRoom, -ringRoom, -ringRoom);
    }
    drawRounded(painter, area, corner, ground.fill, ground.border);
    if (showsFocus(option) && !solid) {
        drawRing(painter, area, corner, theme.accentText);
    }
}

} // namespace

int controlHeight(const QFontMetrics& metrics) {
    return std::max(30, metrics.height() + 12);
}

QSize switchSize() {
    return {34, 20};
}

QSize pushButtonSize(const QStyleOptionButton& option) {
    const int text = option.fontMetrics.size(Qt::TextShowMnemonic, option.text).width();
    const int icon = option.icon.isNull() ? 0 : buttonIconSide;
    const int gap = text > 0 && icon > 0 ? iconGap : 0;
    return {std::max(narrowestButton, text + icon + gap + 2 * buttonPadding),
            controlHeight(option.fontMetrics)};
}

void drawPushButton(const Theme& theme, const QStyleOptionButton& option, ButtonKind kind,
                    QPainter* painter) {
    drawGround(theme, option, shownKind(option, kind), painter);
}

void drawPushButtonLabel(const Theme& theme, const QStyleOptionButton& option, ButtonKind kind,
                         QPainter* painter) {
    const PaintScope scope(painter);
    const QColor color = labelColor(option, theme, shownKind(option, kind));
    QRect area = option.rect;
    Qt::Alignment alignment = Qt::AlignCenter;
    if (!option.icon.isNull()) {
        const int text = option.fontMetrics.size(Qt::TextShowMnemonic, option.text).width();
        const int whole = buttonIconSide + (text > 0 ? iconGap + text : 0);
        const int left = area.x() + (area.width() - whole) / 2;
        const QRect place =
            QStyle::visualRect(option.direction, option.rect,
                               QRect(left, area.y() + (area.height() - buttonIconSide) / 2,
                                     buttonIconSide, buttonIconSide));
        drawIcon(painter, place, option.icon, color, isEnabled(option));
        area = QStyle::visualRect(
            option.direction, option.rect,
            QRect(left + buttonIconSide + iconGap, area.y(), text + 1, area.height()));
        alignment = Qt::AlignLeft;
    }
    painter->setPen(color);
    if (kind == ButtonKind::Segment && theme.dark) {
        drawLineOnDark(painter, area, option.text);
    } else {
        drawLine(painter, area, alignment, option.text);
    }
}

void drawToolButton(const Theme& theme, const QStyleOptionToolButton& option, ButtonKind kind,
                    QPainter* painter) {
    drawGround(theme, option, kind, painter);
    const PaintScope scope(painter);
    const QColor color = labelColor(option, theme, kind);
    if (option.icon.isNull() || option.toolButtonStyle == Qt::ToolButtonTextOnly) {
        painter->setPen(color);
        drawLine(painter, option.rect, Qt::AlignCenter, option.text);
        return;
    }
    const QRect place = QStyle::alignedRect(option.direction, Qt::AlignCenter,
                                            QSize(buttonIconSide, buttonIconSide), option.rect);
    drawIcon(painter, place, option.icon, color, isEnabled(option));
}

void drawSwitch(const Theme& theme, const QStyleOption& option, QPainter* painter) {
    const PaintScope scope(painter);
    const bool on = option.state.testFlag(QStyle::State_On);
    QRectF area(option.rect);
    if (showsFocus(option)) {
        drawRing(painter, area, area.height() / 2, theme.accentText);
        area.adjust(ringRoom, ringRoom, -ringRoom, -ringRoom);
    }
    const QColor fill = !isEnabled(option) ? theme.controlBorder
                        : on               ? (isHovered(option) ? theme.accentHover : theme.accent)
                                           : theme.switchOff;
    drawRounded(painter, area, area.height() / 2, fill);
    const qreal inset = 3;
    const qreal side = area.height() - 2 * inset;
    const bool right = on == (option.direction == Qt::LeftToRight);
    const QRectF knob(right ? area.right() - inset - side : area.left() + inset, area.top() + inset,
                      side, side);
    drawRounded(painter, knob, side / 2, theme.knob);
}

void drawSwitchLabel(const Theme& theme, const QStyleOptionButton& option, QPainter* painter) {
    const PaintScope scope(painter);
    painter->setPen(isEnabled(option) ? theme.text : theme.disabledText);
    drawLine(painter, option.rect, QStyle::visualAlignment(option.direction, Qt::AlignLeft),
             option.text);
}

void drawRadio(const Theme& theme, const QStyleOption& option, QPainter* painter) {
    const PaintScope scope(painter);
    const bool on = option.state.testFlag(QStyle::State_On);
    const qreal side = std::min(option.rect.width(), option.rect.height());
    QRectF area(0, 0, side, side);
    area.moveCenter(QRectF(option.rect).center());
    if (showsFocus(option)) {
        drawRing(painter, area, side / 2, theme.accentText);
        area.adjust(ringRoom, ringRoom, -ringRoom, -ringRoom);
    }
    const QColor fill = isEnabled(option) ? theme.accent : theme.controlBorder;
    if (on) {
        drawRounded(painter, area, area.height() / 2, fill);
        const qreal hole = area.height() * 0.31;
        drawRounded(painter, area.adjusted(hole, hole, -hole, -hole), area.height() / 2,
                    theme.knob);
    } else {
        drawRounded(painter, area, area.height() / 2, theme.field, theme.switchOff);
    }
}

} // namespace orv
