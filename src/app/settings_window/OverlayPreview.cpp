#include "OverlayPreview.h"

#include "Theme.h"
#include "ThreadChecks.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace orv {

namespace {

// The subtitle window's own measures, at three quarters of their size.
constexpr double scale = 0.75;
constexpr double corner = 16 * scale;
constexpr double borderWidth = 3 * scale;
constexpr double sidePadding = 20 * scale;
constexpr double verticalPadding = 15 * scale;
constexpr double lineGap = 6 * scale;
constexpr int originalPixels = 11;
constexpr int translationPixels = 17;
constexpr int stageMargin = 14;
constexpr int stageHeight = 112;

QFont sized(QFont font, int pixels, QFont::Weight weight) {
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

} // namespace

OverlayPreview::OverlayPreview(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void OverlayPreview::setAppearance(const SubtitleAppearance& appearance) {
    ORV_ON_MAIN();
    appearance_ = appearance;
    update();
}

void OverlayPreview::setTexts(const QString& original, const QString& translation) {
    ORV_ON_MAIN();
    original_ = original;
    translation_ = translation;
    update();
}

QSize OverlayPreview::sizeHint() const {
    return {320, stageHeight};
}

void OverlayPreview::paintStage(QPainter& painter) const {
    QPainterPath outline;
    outline.addRoundedRect(rect(), radius::control, radius::control);
    painter.setClipPath(outline);
    QLinearGradient stage(0, 0, width(), height());
    stage.setColorAt(0.0, QColor(0xF2, 0xE3, 0xC6));
    stage.setColorAt(0.45, QColor(0x8F, 0xA9, 0xB8));
    stage.setColorAt(1.0, QColor(0x1D, 0x2A, 0x3A));
    painter.fillRect(rect(), stage);
}

void OverlayPreview::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintStage(painter);

    const QFont smallFont = sized(font(), originalPixels, QFont::Normal);
    const QFont largeFont = sized(font(), translationPixels, QFont::DemiBold);
    const double smallHeight = original_.isEmpty() ? 0 : QFontMetricsF(smallFont).height();
    const double largeHeight = QFontMetricsF(largeFont).height();
    const double gap = original_.isEmpty() ? 0 : lineGap;
    const double height_ = smallHeight + gap + largeHeight + 2 * verticalPadding;
    const QRectF box(stageMargin, (height() - height_) / 2, width() - 2.0 * stageMargin, height_);

    QPen pen(Qt::NoPen);
    QRectF shape = box;
    if (appearance_.border) {
        pen = QPen(*appearance_.border, borderWidth);
        shape = box.adjusted(borderWidth / 2, borderWidth / 2, -borderWidth / 2, -borderWidth / 2);
    }
    painter.setPen(pen);
    painter.setBrush(appearance_.background);
    painter.drawRoundedRect(shape, corner, corner);

    const QRectF inner = box.adjusted(sidePadding, verticalPadding, -sidePadding, -verticalPadding);
    painter.setFont(smallFont);
    painter.setPen(appearance_.original);
    painter.drawText(QRectF(inner.topLeft(), QSizeF(inner.width(), smallHeight)), Qt::AlignCenter,
                     original_);
    painter.setFont(largeFont);
    painter.setPen(appearance_.translation);
    painter.drawText(QRectF(inner.left(), inner.bottom() - largeHeight, inner.width(), largeHeight),
                     Qt::AlignCenter, translation_);
}

} // namespace orv
