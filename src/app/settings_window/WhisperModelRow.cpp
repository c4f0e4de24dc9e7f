#include "WhisperModelRow.h"

#include "Bindings.h"
#include "Buttons.h"
#include "CardRows.h"
#include "QuantityTexts.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QLabel>
#include <QPushButton>

#include <optional>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

using State = WhisperModelManager::State;

/// Empty where there is nothing to say.
QString stateText(const WhisperModelManager& models, const QString& id, const Bindings& bindings) {
    const std::optional<int> percent = models.percent(id);
    switch (models.state(id)) {
    case State::Downloading:
        return percent ? bindings.text(u"settings.whisper.progress"_s)
                             .arg(percentText(bindings.language(), *percent))
                       : bindings.text(u"settings.whisper.downloading"_s);
    case State::Checking:
        return bindings.text(u"settings.whisper.checking"_s);
    case State::Failed:
        return bindings.text(u"settings.whisper.failed.short"_s);
    case State::Partial:
        return bindings.text(u"settings.whisper.partial"_s);
    case State::Unusable:
        return bindings.text(u"settings.whisper.damaged"_s);
    case State::Downloaded:
        return models.isUsed(id) ? bindings.text(u"settings.whisper.serves"_s)
                                 : bindings.text(u"settings.whisper.downloaded"_s);
    case State::Removing:
        return bindings.text(u"settings.whisper.downloaded"_s);
    case State::Absent:
        break;
    }
    return {};
}

Tone stateTone(State state) {
    switch (state) {
    case State::Downloaded:
    case State::Removing:
        return Tone::Good;
    case State::Failed:
    case State::Unusable:
        return Tone::Error;
    default:
        return Tone::Busy;
    }
}

} // namespace

WhisperModelRow::WhisperModelRow(const WhisperModel& model, WhisperModelManager& models,
                                 Bindings& bindings, QWidget* parent)
    : QWidget(parent)
    , model_(model)
    , models_(models)
    , bindings_(bindings)
    , size_(makeHint(this))
    , detail_(makeHint(this))
    , state_(new ToneLabel(this))
    , action_(makeButton(this)) {
    QLabel* name = makeHeading(this);
    name->setText(model_.name);
    size_->setWordWrap(false);
    state_->setWordWrap(false);
    layOutActionRow(*this, {name, size_, state_}, {detail_}, action_);
    connect(action_, &QPushButton::clicked, this, &WhisperModelRow::act);
    connect(&models_, &WhisperModelManager::changed, this, &WhisperModelRow::refresh);
    bindings_.translated(this, [this] { refresh(); });
}

void WhisperModelRow::refresh() {
    ORV_ON_MAIN();
    const State state = models_.state(model_.id);
    size_->setText(fileSizeText(bindings_.language(), model_.megabytes));
    detail_->setText(bindings_.text(model_.detailKey));
    const QString text = stateText(models_, model_.id, bindings_);
    const QString failure = models_.failure(model_.id);
    state_->setText(text);
    state_->setTone(stateTone(state));
    state_->setToolTip(failure.toHtmlEscaped());
    state_->setAccessibleDescription(failure);
    state_->setVisible(!text.isEmpty());
    showAction();
}

void WhisperModelRow::showAction() {
    const State state = models_.state(model_.id);
    const bool isThere = state == State::Downloaded || state == State::Removing;
    const QString remove = bindings_.text(u"settings.whisper.delete"_s);
    const QString fetch = bindings_.text(u"settings.whisper.download"_s);
    action_->setText(isThere ? remove : fetch);
    action_->setIcon(symbol(isThere ? u"trash"_s : u"download"_s));
    reserveWidth(*action_, {remove, fetch});
    action_->setAccessibleName(model_.name + u": "_s + action_->text());
    const bool isAtWork =
        state == State::Downloading || state == State::Checking || state == State::Removing;
    action_->setEnabled(!isAtWork && (isThere || models_.canDownload()));
}

void WhisperModelRow::act() {
    ORV_ON_MAIN();
    if (models_.state(model_.id) == State::Downloaded) {
        models_.deleteWhisperModel(model_.id);
    } else {
        models_.downloadWhisperModel(model_.id);
    }
}

} // namespace orv
