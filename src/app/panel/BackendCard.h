#pragma once

#include "BackendTexts.h"
#include "Card.h"

#include <QList>

class QLabel;
class QVBoxLayout;

namespace orv {

class AudioManager;
class L10n;
class TranslationSettings;

/// The panel's card with what the speech server wants a person to know: what is wrong, who serves
/// instead, what is missing and how to get it. Shown as long as it holds and the run lasts.
class BackendCard : public Card {
    Q_OBJECT

  public:
    /// The references outlive the card.
    BackendCard(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                QWidget* parent = nullptr);

    /// Whether the card says what `headline` says.
    bool says(const QString& headline) const;

  private:
    struct Rows {
        QLabel* summary;
        QLabel* detail;
    };

    void refresh();
    void show(const QList<BackendText>& concerns);
    Rows makeRows();

    AudioManager& audio_;
    TranslationSettings& settings_;
    L10n& l10n_;
    QVBoxLayout* texts_;
    QList<Rows> lines_;
    QList<BackendText> shown_;
};

} // namespace orv
