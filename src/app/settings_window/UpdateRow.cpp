#include "UpdateRow.h"

#include "Bindings.h"
#include "Buttons.h"
#include "Symbols.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The sentence with the version in front of its full stop.
QString availableText(const QString& sentence, const QString& version) {
    const QString named = u" (v"_s + version + u')';
    return sentence.endsWith(u'.') ? QString(sentence.chopped(1) + named + u'.')
                                   : QString(sentence + named);
}

} // namespace

UpdateRow::State UpdateRow::stateAfter(UpdateOutcome outcome) {
    switch (outcome) {
    case UpdateOutcome::Failed:
        return State::Failed;
    case UpdateOutcome::NoSource:
        return State::NoSource;
    case UpdateOutcome::Available:
    case UpdateOutcome::UpToDate:
        break;
    }
    return State::UpToDate;
}

UpdateRow::UpdateRow(UpdateControl& updates, Bindings& bindings, QWidget* parent)
    : QWidget(parent)
    , updates_(updates)
    , bindings_(bindings)
    , result_(new ToneLabel(this))
    , check_(makeButton(this))
    , download_(makeButton(this, ButtonKind::Primary)) {
    check_->setIcon(symbol(u"refresh"_s));
    download_->setIcon(symbol(u"download"_s));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(space::small);
    buttons->addWidget(check_);
    buttons->addWidget(download_);
    buttons->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);
    column->addLayout(buttons);
    column->addWidget(result_);
    connect(check_, &QPushButton::clicked, this, &UpdateRow::check);
    connect(download_, &QPushButton::clicked, this, [this] { updates_.openDownload(); });
    updates_.follow(this, [this] { refresh(); });
    bindings_.translated(this, [this] { refresh(); });
}

void UpdateRow::check() {
    ORV_ON_MAIN();
    state_ = State::Checking;
    refresh();
    updates_.checkForUpdate([self = QPointer(this)](UpdateOutcome outcome) {
        if (self) {
            self->state_ = stateAfter(outcome);
            self->refresh();
        }
    });
}

void UpdateRow::refresh() {
    ORV_ON_MAIN();
    const QString newer = updates_.availableVersion();
    check_->setText(bindings_.text(u"info.update.check"_s));
    check_->setEnabled(state_ != State::Checking);
    download_->setText(bindings_.text(u"info.update.download"_s));
    download_->setVisible(!newer.isEmpty());
    QString text;
    Tone tone = Tone::Plain;
    if (state_ == State::NoSource) {
        text = bindings_.text(u"info.update.nosource"_s);
        tone = Tone::Quiet;
    } else if (state_ == State::Failed) {
        text = bindings_.text(u"info.update.failed"_s);
        tone = Tone::Error;
    } else if (!newer.isEmpty()) {
        text = availableText(bindings_.text(u"info.update.available"_s), newer);
        tone = Tone::Accent;
    } else if (state_ == State::UpToDate) {
        text = bindings_.text(u"info.update.uptodate"_s);
        tone = Tone::Good;
    }
    result_->setText(text);
    result_->setTone(tone);
    result_->setVisible(!text.isEmpty());
}

} // namespace orv
