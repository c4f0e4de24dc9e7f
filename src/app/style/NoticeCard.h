#pragma once

#include "Card.h"

class QPushButton;

namespace orv {

/// A line of text for the user that stays, once it is shown, until its button is pressed.
class NoticeCard : public Card {
    Q_OBJECT

  public:
    explicit NoticeCard(QWidget* parent = nullptr);

    /// What the card and its button say. Another notice takes the place of the one before.
    void setTexts(const QString& text, const QString& closeText);

  private:
    QLabel* text_;
    QPushButton* close_;
};

} // namespace orv
