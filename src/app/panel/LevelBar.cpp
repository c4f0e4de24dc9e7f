#include "LevelBar.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

/// From here on the signal is close to distortion, in percent.
constexpr int hotLevel = 85;

int percent(float value) {
    return static_cast<int>(std::lround(std::clamp(value, 0.0F, 1.0F) * 100.0F));
}

} // namespace

LevelBar::LevelBar(QWidget* parent)
    : QProgressBar(parent) {
    setRange(0, 100);
    setValue(0);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void LevelBar::setLevels(float level, float peak) {
    const int newPeak = percent(peak);
    const int newLevel = percent(level);
    if (newPeak == peak_ && newLevel == value()) {
        return;
    }
    peak_ = newPeak;
    setValue(newLevel);
    update();
}

QSize LevelBar::sizeHint() const {
    return {120, 10};
}

QSize LevelBar::minimumSizeHint() const {
    return {60, 10};
}

void LevelBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF area(rect());
    const qreal radius = area.height() / 2;
    QColor ground = palette().color(QPalette::WindowText);
    ground.setAlphaF(0.12F);
    painter.setBrush(ground);
    painter.drawRoundedRect(area, radius, radius);
    if (value() > 0) {
        QRectF filled = area;
        filled.setWidth(std::max(area.height(), area.width() * value() / 100));
        painter.setBrush(value() < hotLevel ? QColor(0x16, 0xa3, 0x4a) : QColor(0xdc, 0x26, 0x26));
        painter.drawRoundedRect(filled, radius, radius);
    }
    if (peak_ > 0) {
        const qreal x = std::clamp(area.width() * peak_ / 100, radius, area.width() - radius);
        painter.setBrush(palette().color(QPalette::WindowText));
        painter.drawRect(QRectF(x - 1, area.top(), 2, area.height()));
    }
}

} // namespace orv
