#include "NoticeCard.h"

#include "Buttons.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace orv {

NoticeCard::NoticeCard(QWidget* parent)
    : Card(parent, Ground::Notice)
    , text_(makeText(this))
    , close_(makeButton(this)) {
    auto* row = new QHBoxLayout;
    row->setSpacing(space::medium);
    row->addWidget(text_, 1);
    row->addWidget(close_, 0, Qt::AlignTop);
    rows()->addLayout(row);
    connect(close_, &QPushButton::clicked, this, &QWidget::hide);
    hide();
}

void NoticeCard::setTexts(const QString& text, const QString& closeText) {
    ORV_ON_MAIN();
    text_->setText(text);
    close_->setText(closeText);
}

} // namespace orv
