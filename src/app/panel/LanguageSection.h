#pragma once

#include "Card.h"

class QLabel;

namespace orv {

class EngineCatalogue;
class FieldCombo;
class L10n;
class ToneLabel;
class TranslationSettings;

/// The panel's card with the choice of the two languages: what is spoken, and what it is translated
/// into. Says when the chosen engine does not recognise what is spoken.
class LanguageSection : public Card {
    Q_OBJECT

  public:
    /// The references outlive the section.
    LanguageSection(TranslationSettings& settings, const EngineCatalogue& engines, L10n& l10n,
                    QWidget* parent = nullptr);

  private:
    void layOut();
    void connectFields();
    void translate();
    void showLanguages();
    void showLack();

    TranslationSettings& settings_;
    const EngineCatalogue& engines_;
    L10n& l10n_;
    QLabel* heading_;
    QLabel* sourceLabel_;
    FieldCombo* source_;
    QLabel* targetLabel_;
    FieldCombo* target_;
    ToneLabel* lack_;
};

} // namespace orv
