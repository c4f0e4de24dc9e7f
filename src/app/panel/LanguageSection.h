#pragma once

#include "Card.h"

class QLabel;

namespace orv {

class FieldCombo;
class L10n;
class TranslationSettings;

/// The panel's card with the choice of the two languages: what is spoken, and what it is translated
/// into.
class LanguageSection : public Card {
    Q_OBJECT

  public:
    /// The references outlive the section.
    LanguageSection(TranslationSettings& settings, L10n& l10n, QWidget* parent = nullptr);

  private:
    void layOut();
    void connectFields();
    void translate();
    void showLanguages();

    TranslationSettings& settings_;
    L10n& l10n_;
    QLabel* heading_;
    QLabel* sourceLabel_;
    FieldCombo* source_;
    QLabel* targetLabel_;
    FieldCombo* target_;
};

} // namespace orv
