#pragma once

#include <QPainter>

namespace orv {

/// A scope of painting with smooth edges: saves the painter's state at its beginning and restores
/// it at its end.
class PaintScope {
  public:
    explicit PaintScope(QPainter* painter)
        : painter_(painter) {
        painter_->save();
        painter_->setRenderHint(QPainter::Antialiasing);
    }

    ~PaintScope() { painter_->restore(); }

    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

  private:
    QPainter* painter_;
};

} // namespace orv
