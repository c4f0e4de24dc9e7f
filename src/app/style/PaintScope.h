#pragma once

#include <QPainter>

namespace orv {

/// Saves the painter's state, smooths edges, and gives the state back.
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
