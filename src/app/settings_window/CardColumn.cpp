#include "CardColumn.h"

#include "Card.h"
#include "Theme.h"

#include <QVBoxLayout>

namespace orv {

CardColumn::CardColumn(QWidget* parent)
    : QWidget(parent)
    , column_(new QVBoxLayout(this)) {
    column_->setContentsMargins(space::large, space::tiny, space::large, space::large);
    column_->setSpacing(space::medium);
    column_->addStretch(1);
}

Card* CardColumn::addCard() {
    auto* card = new Card(this);
    addCard(card);
    return card;
}

void CardColumn::addCard(Card* card) {
    column_->insertWidget(column_->count() - 1, card);
}

} // namespace orv
