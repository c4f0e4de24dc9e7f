#include "SliderField.h"

#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>
#include <utility>

namespace orv {

// The slider counts steps, so that keys, clicks and drags all land on them.
SliderField::SliderField(int lowest, int highest, int step, ValueText valueText, QWidget* parent)
    : QWidget(parent)
    , valueText_(std::move(valueText))
    , step_(step)
    , name_(new QLabel(this))
    , valueLabel_(new ToneLabel(this, Tone::Quiet))
    , slider_(new QSlider(Qt::Horizontal, this)) {
    slider_->setRange(lowest / step, highest / step);
    slider_->setPageStep(4);
    slider_->installEventFilter(this);
    valueLabel_->setWordWrap(false);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(space::small);
    grid->setVerticalSpacing(0);
    grid->addWidget(name_, 0, 0);
    grid->addWidget(valueLabel_, 0, 1, Qt::AlignRight);
    grid->addWidget(slider_, 1, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    connect(slider_, &QSlider::valueChanged, this, [this] {
        showValue();
        Q_EMIT moving(value());
        if (!slider_->isSliderDown()) {
            Q_EMIT chosen(value());
        }
    });
    connect(slider_, &QSlider::sliderReleased, this, [this] { Q_EMIT chosen(value()); });
    showValue();
}

void SliderField::setName(const QString& name) {
    ORV_ON_MAIN();
    nameField(name_, slider_, name);
    showValue();
}

void SliderField::setValue(int value) {
    ORV_ON_MAIN();
    if (slider_->isSliderDown()) {
        return; // The user is at it.
    }
    const QSignalBlocker blocker(slider_);
    slider_->setValue(static_cast<int>(std::lround(double(value) / step_)));
    showValue();
}

int SliderField::value() const {
    return slider_->value() * step_;
}

bool SliderField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Wheel) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void SliderField::showValue() {
    const QString text = valueText_(value());
    valueLabel_->setText(text);
    slider_->setAccessibleDescription(text);
}

} // namespace orv
