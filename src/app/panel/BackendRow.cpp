#include "BackendRow.h"

#include "Buttons.h"
#include "Card.h"
#include "L10n.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"
#include "TranslationEngine.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

BackendRow::BackendRow(TranslationEngine& engine, L10n& l10n, QWidget* parent)
    : Card(parent)
    , engine_(engine)
    , l10n_(l10n)
    , status_(new ToneLabel(this))
    , toggle_(makeButton(this)) {
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(status_, 1);
    row->addWidget(toggle_);
    rows()->setContentsMargins(space::medium, space::small, space::medium, space::small);
    rows()->addLayout(row);
    connect(toggle_, &QPushButton::clicked, this, &BackendRow::toggleBackend);
    connect(&engine_, &TranslationEngine::isRunningChanged, this, &BackendRow::refresh);
    connect(&engine_, &TranslationEngine::statusMessageChanged, this, &BackendRow::refresh);
    connect(&l10n_, &L10n::currentChanged, this, &BackendRow::refresh);
    refresh();
}

void BackendRow::refresh() {
    ORV_ON_MAIN();
    status_->setText(engine_.statusMessage());
    toggle_->setText(
        l10n_.platformText(engine_.isRunning() ? u"main.backend.stop"_s : u"main.backend.start"_s));
}

void BackendRow::toggleBackend() {
    ORV_ON_MAIN();
    if (engine_.isRunning()) {
        engine_.stopBackend();
    } else {
        engine_.startBackend();
    }
}

} // namespace orv
