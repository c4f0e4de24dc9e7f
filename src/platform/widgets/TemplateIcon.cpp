#include "TemplateIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

constexpr QRgb dark = 0xff1f2328;
constexpr QRgb light = 0xfff6f8fa;
constexpr double middleLuminance = 0.18; ///< Between them, to the eye.

constexpr double seamOpacity = 0.9;
constexpr double seamWidth = 1.0 / 26; ///< Of the icon's side.

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

/// Relative luminance as WCAG defines it, 0 to 1.
double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

QImage shape(QSvgRenderer& renderer, int side, const QColor& colour) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), colour);
    return image;
}

QPixmap drawn(QSvgRenderer& renderer, int side, const QColor& ink) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const QImage seam = shape(renderer, side, inkOn(ink));
    const double width = std::max(0.75, side * seamWidth);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(seamOpacity / 2);
    for (const QPointF& step : {QPointF(-1, 0), QPointF(1, 0), QPointF(0, -1), QPointF(0, 1)}) {
        painter.drawImage(step * width, seam);
    }
    painter.setOpacity(1);
    painter.drawImage(0, 0, shape(renderer, side, ink));
    return pixmap;
}

} // namespace

QColor inkOn(const QColor& background) {
    return QColor::fromRgb(luminance(background) > middleLuminance ? dark : light);
}

QIcon templateIcon(const QString& path, const QColor& ink) {
    QSvgRenderer renderer(path);
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 44, 48, 64}) {
        icon.addPixmap(drawn(renderer, side, ink));
    }
    return icon;
}

} // namespace orv
