#include "BackendCard.h"

#include "AudioManager.h"
#include "L10n.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"
#include "WarningMark.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orv {

namespace {

/// Shows `text`, broken wherever it has to be, and tells it as it is to assistive programs.
void setText(QLabel& label, const QString& text) {
    label.setText(withBreaks(text));
    label.setAccessibleName(text);
    label.setVisible(!text.isEmpty());
}

} // namespace

BackendCard::BackendCard(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                         QWidget* parent)
    : Card(parent, Ground::Notice)
    , audio_(audio)
    , settings_(settings)
    , l10n_(l10n)
    , texts_(new QVBoxLayout) {
    texts_->setSpacing(0);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(new WarningMark(this), 0, Qt::AlignTop);
    row->addLayout(texts_, 1);
    rows()->addLayout(row);
    connect(&audio_, &AudioManager::statusChanged, this, &BackendCard::refresh);
    connect(&audio_, &AudioManager::progressChanged, this, &BackendCard::refresh);
    connect(&l10n_, &L10n::currentChanged, this, &BackendCard::refresh);
    hide();
    refresh();
}

bool BackendCard::says(const QString& headline) const {
    return std::any_of(shown_.begin(), shown_.end(),
                       [&](const BackendText& text) { return headline.endsWith(text.summary); });
}

void BackendCard::refresh() {
    ORV_ON_MAIN();
    const RunProgress& progress = audio_.progress();
    QList<BackendText> concerns;
    // Without a link nobody knows what still holds.
    if (progress.isOn && progress.trouble != RunTrouble::LinkLost) {
        concerns = backendConcerns(audio_.backendNews(), settings_.sourceLang.get(),
                                   [this](const QString& key) { return l10n_.platformText(key); });
    }
    if (concerns != shown_) {
        show(concerns);
    }
}

void BackendCard::show(const QList<BackendText>& concerns) {
    const bool saysMore = concerns.size() > shown_.size();
    shown_ = concerns;
    while (lines_.size() < concerns.size()) {
        lines_.append(makeRows());
    }
    for (qsizetype i = 0; i < lines_.size(); ++i) {
        const BackendText text = concerns.value(i);
        setText(*lines_.at(i).summary, text.summary);
        setText(*lines_.at(i).detail, text.detail);
    }
    setVisible(!concerns.isEmpty());
    setAccessibleName(concerns.value(0).summary);
    setAccessibleDescription(concerns.value(0).detail);
    if (saysMore) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

BackendCard::Rows BackendCard::makeRows() {
    const Rows made{.summary = makeHeading(this), .detail = makeText(this)};
    made.summary->setWordWrap(true);
    made.summary->setContentsMargins(0, lines_.isEmpty() ? 0 : space::small, 0, 0);
    for (QLabel* label : {made.summary, made.detail}) {
        texts_->addWidget(label);
    }
    return made;
}

} // namespace orv
