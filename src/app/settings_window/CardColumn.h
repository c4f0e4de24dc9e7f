#pragma once

#include <QWidget>

class QVBoxLayout;

namespace orv {

class Card;

/// The content of a tab: a column of cards.
class CardColumn : public QWidget {
    Q_OBJECT

  public:
    explicit CardColumn(QWidget* parent = nullptr);

    Card* addCard();

    /// Puts `card` at the end; the column is its parent.
    void addCard(Card* card);

  private:
    QVBoxLayout* column_;
};

} // namespace orv
