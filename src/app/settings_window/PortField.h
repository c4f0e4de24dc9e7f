#pragma once

#include <QSpinBox>

namespace orv {

/// A number field for a network port, 1 to 65535. The mouse wheel scrolls past it and never changes
/// it; what was typed counts when the field is left, also by closing the window.
class PortField : public QSpinBox {
    Q_OBJECT

  public:
    explicit PortField(QWidget* parent = nullptr);

  protected:
    void wheelEvent(QWheelEvent* event) override;
    void hideEvent(QHideEvent* event) override;
};

} // namespace orv
