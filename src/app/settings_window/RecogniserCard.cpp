#include "RecogniserCard.h"

#include "BackendTexts.h"
#include "Bindings.h"
#include "Buttons.h"
#include "CardRows.h"
#include "NearRecognisers.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

RecogniserCard::RecogniserCard(NearRecognisers& recognisers, Bindings& bindings, QWidget* parent)
    : Card(parent)
    , recognisers_(recognisers)
    , bindings_(bindings)
    , list_(new QVBoxLayout)
    , note_(makeHint(this))
    , search_(makeButton(this)) {
    orv::addHeading(*this, bindings_, u"settings.near"_s);
    addHint(*this, bindings_, u"settings.near.hint"_s);
    list_->setSpacing(space::medium);
    rows()->addLayout(list_);
    rows()->addWidget(note_);
    search_->setIcon(symbol(u"refresh"_s));
    rows()->addWidget(atTheLeft(search_));
    connect(search_, &QPushButton::clicked, &recognisers_, &NearRecognisers::refresh);
    connect(&recognisers_, &NearRecognisers::changed, this, &RecogniserCard::refresh);
    bindings_.translated(this, [this] { refresh(); });
}

void RecogniserCard::refresh() {
    ORV_ON_MAIN();
    while (QLayoutItem* item = list_->takeAt(0)) {
        // The button that was pressed may be one of them.
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    QList<KnownRecogniser> known;
    if (recognisers_.list()) {
        known = recognisers_.list()->recognisers;
    }
    for (const KnownRecogniser& each : known) {
        list_->addWidget(makeRow(each));
    }
    const bool isSearching = recognisers_.isAtWork();
    const bool isEmpty = known.isEmpty() && !isSearching;
    const QString wrong = problems();
    note_->setText(!wrong.isEmpty() ? withBreaks(wrong) : bindings_.text(u"settings.near.none"_s));
    note_->setVisible(isEmpty || !wrong.isEmpty());
    search_->setText(
        bindings_.text(isSearching ? u"settings.near.searching"_s : u"settings.near.search"_s));
    search_->setEnabled(!isSearching);
}

QString RecogniserCard::problems() const {
    QList<StatusMessage> told = recognisers_.problems();
    if (recognisers_.list()) {
        told += recognisers_.list()->notices;
    }
    QStringList lines;
    for (const StatusMessage& each : told) {
        const BackendText text =
            backendText(each, [this](const QString& key) { return bindings_.text(key); });
        lines.append(QString(text.summary + u'\n' + text.detail).trimmed());
    }
    return lines.join(u'\n');
}

QString RecogniserCard::stateText(const KnownRecogniser& recogniser) const {
    if (!recogniser.isNamed) {
        return {};
    }
    return bindings_.text(recogniser.answers ? u"settings.near.named"_s
                                             : u"settings.near.silent"_s);
}

QWidget* RecogniserCard::makeRow(const KnownRecogniser& recogniser) {
    auto* row = new QWidget(this);
    QLabel* name = makeHeading(row);
    name->setText(recogniser.name);
    auto* state = new ToneLabel(row, recogniser.answers ? Tone::Good : Tone::Error);
    state->setText(stateText(recogniser));
    state->setWordWrap(false);
    QStringList details = {recogniser.address};
    if (!recogniser.model.isEmpty()) {
        details.append(recogniser.model);
    }
    const BackendText why =
        backendText(recogniser.why, [this](const QString& key) { return bindings_.text(key); });
    QLabel* lower = makeHint(row);
    lower->setText(withBreaks(QString(details.join(u" · "_s) + u'\n' + why.summary).trimmed()));
    QPushButton* action = makeButton(row);
    action->setText(
        bindings_.text(recogniser.isNamed ? u"settings.near.forget"_s : u"settings.near.use"_s));
    action->setAccessibleName(recogniser.name + u": "_s + action->text());
    action->setEnabled(!recognisers_.isAtWork());
    connect(action, &QPushButton::clicked, this, [this, recogniser] {
        if (recogniser.isNamed) {
            recognisers_.forget(recogniser);
        } else {
            recognisers_.accept(recogniser);
        }
    });
    layOutActionRow(*row, {name, state}, {lower}, action);
    return row;
}

} // namespace orv
