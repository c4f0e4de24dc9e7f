#include "KeyTrialRow.h"

#include "BackendTexts.h"
#include "Bindings.h"
#include "Buttons.h"
#include "CardRows.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

KeyTrialRow::KeyTrialRow(Subject subject, Bindings& bindings, const SectionName& section,
                         QWidget* parent)
    : QWidget(parent)
    , subject_(std::move(subject))
    , bindings_(bindings)
    , section_(section)
    , try_(makeButton(this))
    , answer_(new ToneLabel(this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);
    column->addWidget(atTheLeft(try_));
    column->addWidget(answer_);
    connect(try_, &QPushButton::clicked, this, &KeyTrialRow::begin);
    bindings_.follow(this, subject_.settings, [this] { forget(); });
    bindings_.translated(this, [this] { refresh(); });
}

void KeyTrialRow::forget() {
    ORV_ON_MAIN();
    trial_.reset();
    state_ = State::Untried;
    refresh();
}

void KeyTrialRow::begin() {
    ORV_ON_MAIN();
    state_ = State::Trying;
    refresh();
    trial_ = std::make_unique<KeyTrial>();
    connect(trial_.get(), &KeyTrial::ended, this, &KeyTrialRow::show);
    trial_->begin(subject_.questions(), subject_.key());
}

void KeyTrialRow::show(const std::optional<ServiceFault>& fault) {
    ORV_ON_MAIN();
    state_ = fault ? State::Fails : State::Works;
    fault_ = fault.value_or(ServiceFault());
    refresh();
}

void KeyTrialRow::refresh() {
    const QString name = bindings_.text(u"settings.engine.key.try"_s);
    try_->setText(state_ == State::Trying ? bindings_.text(u"settings.engine.key.trying"_s) : name);
    try_->setAccessibleName(section_() + u": " + subject_.prefix + name);
    try_->setEnabled(state_ != State::Trying && !subject_.key().isEmpty());
    if (state_ == State::Works) {
        answer_->setTone(Tone::Good);
        answer_->setText(bindings_.text(u"settings.engine.key.works"_s).arg(subject_.product));
    } else if (state_ == State::Fails) {
        answer_->setTone(Tone::Error);
        answer_->setText(withBreaks(faultText()));
    }
    answer_->setVisible(state_ == State::Works || state_ == State::Fails);
}

QString KeyTrialRow::faultText() const {
    const BackendNotice notice{
        .code = codeOf(fault_.kind),
        .parameters = {{u"engine"_s, subject_.product}, {u"said"_s, fault_.said}}};
    const auto text =
        backendText(notice, [this](const QString& key) { return bindings_.text(key); });
    return text ? QString(text->summary + u'\n' + text->detail) : QString();
}

} // namespace orv
