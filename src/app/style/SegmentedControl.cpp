#include "SegmentedControl.h"

#include "ButtonKind.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>

namespace orv {

namespace {

constexpr int troughMargin = 2;

} // namespace

SegmentedControl::SegmentedControl(QWidget* parent)
    : QWidget(parent)
    , row_(new QHBoxLayout(this)) {
    row_->setContentsMargins(troughMargin, troughMargin, troughMargin, troughMargin);
    row_->setSpacing(troughMargin);
    // Toggled, not clicked: assistive programs switch without a click.
    connect(&group_, &QButtonGroup::idToggled, this, [this](int id, bool checked) {
        if (checked) {
            Q_EMIT chosen(id);
        }
    });
}

QAbstractButton* SegmentedControl::addSegment(int id) {
    auto* button = new QPushButton(this);
    button->setCheckable(true);
    button->setAutoDefault(false);
    setButtonKind(*button, ButtonKind::Segment);
    group_.addButton(button, id);
    row_->addWidget(button, 1);
    return button;
}

void SegmentedControl::setSegmentText(int id, const QString& text) {
    group_.button(id)->setText(text);
}

void SegmentedControl::setChosen(int id) {
    const QSignalBlocker blocker(group_);
    group_.button(id)->setChecked(true);
}

void SegmentedControl::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawRounded(&painter, QRectF(rect()), radius::control + troughMargin, themeOf(*this).track);
}

} // namespace orv
