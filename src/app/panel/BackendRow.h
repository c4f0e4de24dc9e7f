#pragma once

#include "Card.h"

class QLabel;
class QPushButton;

namespace orv {

class L10n;
class ToneLabel;
class TranslationEngine;

/// The backend's status with the button that starts or stops it, and what the backend said last
/// where its start has failed.
class BackendRow : public Card {
    Q_OBJECT

  public:
    /// The references outlive the row.
    BackendRow(TranslationEngine& engine, L10n& l10n, QWidget* parent = nullptr);

  private:
    void refresh();
    void toggleBackend();

    TranslationEngine& engine_;
    L10n& l10n_;
    ToneLabel* status_;
    QLabel* detail_;
    QPushButton* toggle_;
};

} // namespace orv
