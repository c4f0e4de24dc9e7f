#pragma once

#include "Card.h"

#include <QList>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace orv {

class Bindings;
class NearRecognisers;
struct KnownRecogniser;

/// The recognisers that run on this computer already: a row for each, with a button that lets it
/// serve or does so no longer.
class RecogniserCard : public Card {
    Q_OBJECT

  public:
    /// The references outlive the card.
    RecogniserCard(NearRecognisers& recognisers, Bindings& bindings, QWidget* parent = nullptr);

  private:
    void refresh();
    QWidget* makeRow(const KnownRecogniser& recogniser);
    QString stateText(const KnownRecogniser& recogniser) const;
    QString problems() const;

    NearRecognisers& recognisers_;
    Bindings& bindings_;
    QVBoxLayout* list_;
    QLabel* note_;
    QPushButton* search_;
};

} // namespace orv
