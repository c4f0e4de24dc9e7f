#include "PortField.h"

#include <QWheelEvent>

namespace orv {

namespace {

constexpr int lastPort = 65535;
constexpr int fieldWidth = 110; // Logical pixels.

} // namespace

PortField::PortField(QWidget* parent)
    : QSpinBox(parent) {
    setRange(1, lastPort);
    setFixedWidth(fieldWidth);
    setCorrectionMode(QAbstractSpinBox::CorrectToPreviousValue);
    setFocusPolicy(Qt::StrongFocus);
}

void PortField::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void PortField::hideEvent(QHideEvent* event) {
    interpretText();
    QSpinBox::hideEvent(event);
}

} // namespace orv
