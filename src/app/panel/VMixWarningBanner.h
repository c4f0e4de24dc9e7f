#pragma once

#include "Pieces.h"

class QLabel;
class QPushButton;

namespace orv {

class L10n;
class TranslationSettings;
class VmixTracking;

/// Tells that vMix cannot be reached, and offers to disable the output, to be reminded later, or
/// not to be warned any more. Shown as long as `vmixShowWarningBanner` of the settings is true.
class VMixWarningBanner : public Card {
    Q_OBJECT

  public:
    /// The references outlive the banner.
    VMixWarningBanner(TranslationSettings& settings, VmixTracking& tracking, L10n& l10n,
                      QWidget* parent = nullptr);

  private:
    void layOut();
    void follow(bool shown);
    void translate();

    TranslationSettings& settings_;
    L10n& l10n_;
    QLabel* title_;
    QLabel* detail_;
    QPushButton* disable_;
    QPushButton* later_;
    QPushButton* off_;
};

} // namespace orv
