#pragma once

#include <QSlider>
#include <QWheelEvent>

namespace orv {

/// A slider on a page that scrolls: the mouse wheel goes past it and never changes it.
class PageSlider : public QSlider {
    Q_OBJECT

  public:
    using QSlider::QSlider;

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

} // namespace orv
