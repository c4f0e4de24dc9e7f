#include "InterruptionBanner.h"

#include "Buttons.h"
#include "L10n.h"
#include "RunRecovery.h"
#include "RunTexts.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "WarningMark.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

InterruptionBanner::InterruptionBanner(RunRecovery& recovery, L10n& l10n, QWidget* parent)
    : Card(parent, Ground::Notice)
    , recovery_(recovery)
    , l10n_(l10n)
    , title_(makeHeading(this))
    , detail_(new QLabel(this))
    , continue_(makeButton(this, ButtonKind::Primary)) {
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    for (QLabel* label : {title_, detail_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        texts->addWidget(label);
    }
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(new WarningMark(this), 0, Qt::AlignTop);
    row->addLayout(texts, 1);
    row->addWidget(continue_, 0, Qt::AlignVCenter);
    rows()->addLayout(row);
    connect(continue_, &QPushButton::clicked, this, [this] { recovery_.continueRun(); });
    connect(&recovery_, &RunRecovery::changed, this, &InterruptionBanner::refresh);
    connect(&recovery_, &RunRecovery::interrupted, this, &InterruptionBanner::announce);
    connect(&l10n_, &L10n::currentChanged, this, &InterruptionBanner::refresh);
    refresh();
}

void InterruptionBanner::refresh() {
    ORV_ON_MAIN();
    const auto text = [this](const QString& key) { return l10n_.platformText(key); };
    title_->setText(text(u"run.interrupted"_s));
    detail_->setText(troubleText(recovery_.interruption(), text));
    continue_->setText(text(recovery_.isContinuing() ? u"run.continuing"_s : u"run.continue"_s));
    continue_->setEnabled(!recovery_.isContinuing());
    setAccessibleName(title_->text());
    setAccessibleDescription(detail_->text());
    setVisible(recovery_.isInterrupted());
}

void InterruptionBanner::announce() {
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

} // namespace orv
