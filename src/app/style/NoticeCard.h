#pragma once

#include "Pieces.h"

class QPushButton;

namespace orv {

/// A line of text for the user that stays until its button is pressed; hidden at first.
class NoticeCard : public Card {
    Q_OBJECT

  public:
    explicit NoticeCard(QWidget* parent = nullptr);

    /// Shows `text`; another notice takes its place.
    void showNotice(const QString& text, const QString& closeText);

  private:
    QLabel* text_;
    QPushButton* close_;
};

} // namespace orv
