#include "VMixWarningBanner.h"

#include "Buttons.h"
#include "L10n.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "VmixTracking.h"
#include "WarningMark.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

VMixWarningBanner::VMixWarningBanner(VmixTracking& tracking, L10n& l10n, QWidget* parent)
    : Card(parent, Ground::Notice)
    , l10n_(l10n)
    , title_(makeHeading(this))
    , detail_(new QLabel(this))
    , disable_(makeButton(this))
    , later_(makeButton(this))
    , off_(makeButton(this)) {
    layOut();
    connect(disable_, &QPushButton::clicked, this, [&tracking] { tracking.disableVmix(); });
    connect(later_, &QPushButton::clicked, this, [&tracking] { tracking.vmixBannerSnooze(); });
    connect(off_, &QPushButton::clicked, this, [&tracking] { tracking.turnOffWarnings(); });
    connect(&tracking, &VmixTracking::vmixShowWarningBannerChanged, this,
            &VMixWarningBanner::follow);
    connect(&l10n_, &L10n::currentChanged, this, &VMixWarningBanner::translate);
    translate();
    setVisible(tracking.failures().vmixShowWarningBanner);
}

void VMixWarningBanner::layOut() {
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    for (QLabel* label : {title_, detail_}) {
        label->setWordWrap(true);
        texts->addWidget(label);
    }
    auto* message = new QHBoxLayout;
    message->setSpacing(space::small);
    message->addWidget(new WarningMark(this), 0, Qt::AlignTop);
    message->addLayout(texts, 1);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(space::small);
    buttons->addStretch(1);
    for (QPushButton* button : {disable_, later_, off_}) {
        buttons->addWidget(button);
    }
    rows()->addLayout(message);
    rows()->addLayout(buttons);
}

void VMixWarningBanner::follow(bool shown) {
    ORV_ON_MAIN();
    setVisible(shown);
    if (shown) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

void VMixWarningBanner::translate() {
    ORV_ON_MAIN();
    title_->setText(l10n_.platformText(u"vmix.warn.title"_s));
    detail_->setText(l10n_.platformText(u"vmix.warn.detail"_s));
    disable_->setText(l10n_.platformText(u"vmix.warn.disable"_s));
    later_->setText(l10n_.platformText(u"vmix.warn.snooze"_s));
    off_->setText(l10n_.platformText(u"vmix.warn.off"_s));
    setAccessibleName(title_->text());
    setAccessibleDescription(detail_->text());
}

} // namespace orv
