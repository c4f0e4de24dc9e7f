#include "StyleDrawing.h"

#include <QPaintDevice>
#include <QPainterPath>
#include <QPixmap>
#include <QStyle>
#include <QWidget>

#include <cmath>

namespace orv {

namespace {

constexpr int signVeil = 110; ///< Of white over a picture on dark ground, of 255.

} // namespace

void drawRounded(QPainter* painter, const QRectF& area, qreal corner, const QColor& fill,
                 const QColor& border) {
    painter->setPen(Qt::NoPen);
    if (!border.isValid()) {
        painter->setBrush(fill);
        painter->drawRoundedRect(area, corner, corner);
        return;
    }
    painter->setBrush(border);
    painter->drawRoundedRect(area, corner, corner);
    painter->setBrush(fill);
    painter->drawRoundedRect(area.adjusted(1, 1, -1, -1), corner - 1, corner - 1);
}

void drawRing(QPainter* painter, const QRectF& area, qreal corner, const QColor& color) {
    painter->setPen(QPen(color, 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(area.adjusted(1, 1, -1, -1), corner - 1, corner - 1);
}

void drawChevron(QPainter* painter, const QRectF& area, const QColor& color, bool up) {
    const QPointF centre = area.center();
    const qreal rise = up ? -2.0 : 2.0;
    QPainterPath path(centre + QPointF(-4, -rise));
    path.lineTo(centre + QPointF(0, rise));
    path.lineTo(centre + QPointF(4, -rise));
    painter->setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(path);
}

void drawTick(QPainter* painter, const QRectF& area, const QColor& color) {
    const QPointF centre = area.center();
    QPainterPath path(centre + QPointF(-4, 0));
    path.lineTo(centre + QPointF(-1, 3));
    path.lineTo(centre + QPointF(4.5, -3.5));
    painter->setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(path);
}

void drawLine(QPainter* painter, const QRect& area, Qt::Alignment alignment, const QString& text) {
    QString plain;
    plain.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isMark = text[i] == QLatin1Char('&') && i + 1 < text.size();
        plain += isMark ? text[++i] : text[i];
    }
    const QFontMetricsF metrics = QFontMetricsF(painter->font());
    const qreal width = metrics.horizontalAdvance(plain);
    qreal x = area.x();
    if (alignment.testFlag(Qt::AlignHCenter)) {
        x += (area.width() - width) / 2;
    } else if (alignment.testFlag(Qt::AlignRight)) {
        x += area.width() - width;
    }
    const qreal y = area.y() + (area.height() - metrics.height()) / 2 + metrics.ascent();
    painter->drawText(QPointF(x, std::round(y)), plain);
}

void drawLineOnDark(QPainter* painter, const QRect& area, const QString& text) {
    if (text.isEmpty() || !text.front().isSurrogate()) {
        drawLine(painter, area, Qt::AlignCenter, text);
        return;
    }
    const QFontMetricsF metrics(painter->font());
    const qreal whole = metrics.horizontalAdvance(text);
    const qreal sign = metrics.horizontalAdvance(text.section(u' ', 0, 0));
    const QRectF place(area.x() + (area.width() - whole) / 2, area.y(), sign, area.height());

    const qreal ratio = painter->device()->devicePixelRatioF();
    QPixmap lighter(area.size() * ratio);
    lighter.setDevicePixelRatio(ratio);
    lighter.fill(Qt::transparent);
    QPainter layer(&lighter);
    layer.setFont(painter->font());
    layer.setPen(painter->pen());
    drawLine(&layer, QRect(QPoint(), area.size()), Qt::AlignCenter, text);
    layer.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    layer.fillRect(QRect(QPoint(), area.size()), QColor(255, 255, 255, signVeil));
    layer.end();

    painter->save();
    painter->setClipRect(place);
    painter->drawPixmap(area.topLeft(), lighter);
    painter->setClipRect(QRectF(area).adjusted(place.right() - area.x(), 0, 0, 0));
    drawLine(painter, area, Qt::AlignCenter, text);
    painter->restore();
}

void drawIcon(QPainter* painter, const QRect& area, const QIcon& icon, const QColor& color,
              bool enabled) {
    const qreal ratio = painter->device()->devicePixelRatioF();
    QPixmap pixmap =
        icon.pixmap(area.size(), ratio, enabled || icon.isMask() ? QIcon::Normal : QIcon::Disabled);
    if (icon.isMask()) {
        QPainter tint(&pixmap);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(pixmap.rect(), color);
    }
    const QSizeF size = pixmap.deviceIndependentSize();
    painter->drawPixmap(QPointF(area.x() + (area.width() - size.width()) / 2,
                                area.y() + (area.height() - size.height()) / 2),
                        pixmap);
}

bool isPopup(const QWidget* widget) {
    return widget != nullptr &&
           (widget->isWindow() || widget->inherits("QComboBoxPrivateContainer"));
}

bool showsFocus(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus) &&
           option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

bool isEnabled(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_Enabled);
}

bool isHovered(const QStyleOption& option) {
    return isEnabled(option) && option.state.testFlag(QStyle::State_MouseOver);
}

bool isPressed(const QStyleOption& option) {
    return isEnabled(option) && option.state.testFlag(QStyle::State_Sunken);
}

} // namespace orv
