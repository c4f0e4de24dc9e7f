#include "SoftShadow.h"

#include "OverlayFrames.h"

#include <QPaintDevice>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace orv {

namespace {

constexpr double blur = 8.0;   // Standard deviation.
constexpr double offset = 6.0; // Downwards, as if lit from above.
constexpr double darkness = 0.38;

// Beyond a corner of this size the shadow of an edge looks the same everywhere.
constexpr int corner = SoftShadow::margin + OverlayLengths::cornerRadius + 6;
constexpr int tileSize = 2 * corner + 1;

/// Distance from a rounded square, centred in the tile; negative inside.
double distance(double x, double y) {
    const double half = tileSize / 2.0 - SoftShadow::margin;
    const double radius = OverlayLengths::cornerRadius;
    const double overX = std::abs(x - tileSize / 2.0) - half + radius;
    const double overY = std::abs(y - tileSize / 2.0) - half + radius;
    return std::hypot(std::max(overX, 0.0), std::max(overY, 0.0)) +
           std::min(std::max(overX, overY), 0.0) - radius;
}

double shadowAt(double x, double y, double pixelRatio) {
    const double covered = std::clamp(0.5 - distance(x, y) * pixelRatio, 0.0, 1.0);
    const double shadow = 0.5 * std::erfc(distance(x, y - offset) / (blur * std::numbers::sqrt2));
    return darkness * shadow * (1.0 - covered);
}

} // namespace

void SoftShadow::render(double pixelRatio) {
    const int pixels = static_cast<int>(std::ceil(tileSize * pixelRatio));
    tile_ = QImage(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    tile_.setDevicePixelRatio(pixelRatio);
    for (int y = 0; y < pixels; ++y) {
        auto* line = reinterpret_cast<QRgb*>(tile_.scanLine(y));
        for (int x = 0; x < pixels; ++x) {
            const double alpha =
                shadowAt((x + 0.5) / pixelRatio, (y + 0.5) / pixelRatio, pixelRatio);
            line[x] = qRgba(0, 0, 0, static_cast<int>(std::lround(alpha * 255)));
        }
    }
}

void SoftShadow::draw(QPainter& painter, const QRect& frame, double strength) {
    const double pixelRatio = painter.device()->devicePixelRatioF();
    if (tile_.isNull() || !qFuzzyCompare(tile_.devicePixelRatio(), pixelRatio)) {
        render(pixelRatio);
    }
    const QRect outer = frame.marginsAdded({margin, margin, margin, margin});

    // Begin and length of the three parts in each direction, on the window and in the tile.
    struct Part {
        double begin, length, source, sourceLength;
    };

    const auto parts = [](double begin, double length) {
        return std::array{Part{begin, corner, 0, corner},
                          Part{begin + corner, length - 2 * corner, corner, 1},
                          Part{begin + length - corner, corner, corner + 1, corner}};
    };
    const auto columns = parts(outer.left(), outer.width());
    const auto rows = parts(outer.top(), outer.height());
    painter.save();
    painter.setOpacity(strength);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < columns.size(); ++column) {
            const Part& across = columns[column];
            const Part& down = rows[row];
            const bool middle = row == 1 && column == 1;
            if (middle || across.length <= 0 || down.length <= 0) {
                continue;
            }
            painter.drawImage(QRectF(across.begin, down.begin, across.length, down.length), tile_,
                              QRectF(across.source * pixelRatio, down.source * pixelRatio,
                                     across.sourceLength * pixelRatio,
                                     down.sourceLength * pixelRatio));
        }
    }
    painter.restore();
}

} // namespace orv
