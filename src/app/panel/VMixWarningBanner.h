#pragma once

#include "Card.h"

class QLabel;
class QPushButton;

namespace orv {

class L10n;
class VmixTracking;

/// The panel's card that tells that vMix cannot be reached, and offers to disable the output, to be
/// reminded later, or not to be warned any more. Shown as long as `vmixShowWarningBanner` is true.
class VMixWarningBanner : public Card {
    Q_OBJECT

  public:
    /// The references outlive the banner.
    VMixWarningBanner(VmixTracking& tracking, L10n& l10n, QWidget* parent = nullptr);

  private:
    void layOut();
    void follow(bool shown);
    void translate();

    L10n& l10n_;
    QLabel* title_;
    QLabel* detail_;
    QPushButton* disable_;
    QPushButton* later_;
    QPushButton* off_;
};

} // namespace orv
