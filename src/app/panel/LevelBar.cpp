#include "LevelBar.h"

#include "LevelBarAccessible.h"
#include "StyleDrawing.h"
#include "Theme.h"
#include "ThreadChecks.h"

#include <QPaintEvent>

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

/// From here on the signal is close to distortion.
constexpr float hotLevel = 0.85F;

constexpr int barHeight = 8;
constexpr int peakWidth = 2;

} // namespace

LevelBar::LevelBar(QWidget* parent)
    : QWidget(parent) {
    installLevelBarAccessibility();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // It draws its own ground, so that nothing behind it has to be painted with it.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void LevelBar::setLevels(float level, float peak) {
    ORV_ON_MAIN();
    level_ = std::clamp(level, 0.0F, 1.0F);
    peak_ = std::clamp(peak, 0.0F, 1.0F);
    if (!isVisible()) {
        return;
    }
    const Shown next = shownFor(level_, peak_);
    if (next == shown_) {
        return;
    }
    if (next.hot != shown_.hot) {
        update();
        return;
    }
    QRegion changed;
    if (next.filled != shown_.filled) {
        const auto [from, to] = std::minmax(next.filled, shown_.filled);
        changed += QRect(from, 0, to - from, height());
    }
    if (next.peak != shown_.peak) {
        changed += peakArea(shown_);
        changed += peakArea(next);
    }
    update(changed);
}

QSize LevelBar::sizeHint() const {
    return {120, barHeight};
}

QSize LevelBar::minimumSizeHint() const {
    return {60, barHeight};
}

LevelBar::Shown LevelBar::shownFor(float level, float peak) const {
    const auto place = [this](float value) {
        return static_cast<int>(std::lround(value * float(width())));
    };
    return {.filled = place(level),
            .peak =
                peak > 0 ? std::clamp(place(peak) - peakWidth, 0, width() - peakWidth) : -peakWidth,
            .hot = level >= hotLevel};
}

QRect LevelBar::peakArea(const Shown& shown) const {
    return {shown.peak, 0, peakWidth, height()};
}

void LevelBar::paintEvent(QPaintEvent* event) {
    shown_ = shownFor(level_, peak_);
    const Theme& theme = themeOf(*this);
    QPainter painter(this);
    painter.fillRect(event->rect(), theme.card);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area(rect());
    const qreal corner = area.height() / 2;
    drawRounded(&painter, area, corner, theme.dark ? theme.controlBorder : theme.controlPressed);
    painter.setClipRect(QRect(0, 0, shown_.filled, height()));
    drawRounded(&painter, area, corner, shown_.hot ? theme.error : theme.accent);
    painter.setClipping(false);
    if (shown_.peak >= 0) {
        painter.fillRect(peakArea(shown_), theme.quietText);
    }
}

} // namespace orv
