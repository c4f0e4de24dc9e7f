#pragma once

#include "Card.h"

namespace orv {

class L10n;
class SliderField;
class SwitchRow;
class TranslationSettings;

/// The panel's card with the switches of a run and with the fields for finding the pauses in what
/// is said.
class OptionsSection : public Card {
    Q_OBJECT

  public:
    /// The references outlive the section.
    OptionsSection(TranslationSettings& settings, L10n& l10n, QWidget* parent = nullptr);

  private:
    void layOut();
    void connectFields();
    void translate();
    void refresh();

    TranslationSettings& settings_;
    L10n& l10n_;
    SwitchRow* overlay_;
    SwitchRow* original_;
    SwitchRow* transcript_;
    SwitchRow* speak_;
    SwitchRow* pauseDetection_;
    QWidget* pauseFields_; ///< Only while pauses are detected.
    SliderField* pauseLength_;
    SliderField* threshold_;
};

} // namespace orv
