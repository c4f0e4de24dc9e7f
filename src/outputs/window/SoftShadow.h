#pragma once

#include <QImage>
#include <QRect>

class QPainter;

namespace orv {

/// The soft shadow around a window with round corners. It is computed once for each pixel density
/// and drawn as four corners and four edges. Nothing is drawn inside the frame, which may be
/// translucent.
class SoftShadow {
  public:
    /// How far the shadow reaches beyond the frame, in logical pixels.
    static constexpr int margin = 28;

    /// Draws the shadow of `frame`, `strength` times (0 to 1) as strong as that of an opaque
    /// window.
    void draw(QPainter& painter, const QRect& frame, double strength);

  private:
    void render(double pixelRatio);

    QImage tile_;
};

} // namespace orv
