#include "Card.h"

#include "StyleDrawing.h"
#include "TextLabels.h"
#include "Theme.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace orv {

Card::Card(QWidget* parent, Ground ground)
    : QWidget(parent)
    , ground_(ground)
    , rows_(new QVBoxLayout(this))
    , fieldSpacing_(space::small) {
    rows_->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    rows_->setSpacing(space::small);
}

QLabel* Card::addHeading() {
    fields_ = nullptr;
    QLabel* heading = makeHeading(this);
    rows_->addWidget(heading);
    return heading;
}

void Card::setFieldsClose() {
    fieldSpacing_ = space::tiny;
}

QLabel* Card::addField(QWidget* control) {
    const bool continues =
        fields_ != nullptr && rows_->itemAt(rows_->count() - 1)->layout() == fields_;
    if (!continues) {
        fields_ = new QGridLayout;
        fields_->setHorizontalSpacing(space::medium);
        fields_->setVerticalSpacing(fieldSpacing_);
        fields_->setColumnStretch(1, 1);
        rows_->addLayout(fields_);
    }
    auto* label = new QLabel(this);
    const int row = fields_->rowCount();
    fields_->addWidget(label, row, 0);
    fields_->addWidget(control, row, 1);
    return label;
}

void Card::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = themeOf(*this);
    const bool notice = ground_ == Ground::Notice;
    drawRounded(&painter, QRectF(rect()), radius::card, notice ? theme.notice : theme.card,
                notice ? theme.noticeBorder : theme.cardBorder);
}

} // namespace orv
