#pragma once

#include "Card.h"

class QLabel;
class QPushButton;

namespace orv {

class L10n;
class RunRecovery;

/// The panel's card that tells what interrupted the run, with the one button that gets it going
/// again. Shown as long as the run is interrupted.
class InterruptionBanner : public Card {
    Q_OBJECT

  public:
    /// The references outlive the banner.
    InterruptionBanner(RunRecovery& recovery, L10n& l10n, QWidget* parent = nullptr);

  private:
    void refresh();
    void announce();

    RunRecovery& recovery_;
    L10n& l10n_;
    QLabel* title_;
    QLabel* detail_;
    QPushButton* continue_;
};

} // namespace orv
