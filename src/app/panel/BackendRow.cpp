#include "BackendRow.h"

#include "Buttons.h"
#include "Card.h"
#include "L10n.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"
#include "TranslationEngine.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

BackendRow::BackendRow(TranslationEngine& engine, L10n& l10n, QWidget* parent)
    : Card(parent)
    , engine_(engine)
    , l10n_(l10n)
    , status_(new ToneLabel(this))
    , detail_(makeText(this))
    , toggle_(makeButton(this)) {
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(status_, 1);
    row->addWidget(toggle_);
    rows()->setContentsMargins(space::medium, space::small, space::medium, space::small);
    rows()->addLayout(row);
    // What others say must not decide how wide the panel is.
    detail_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    rows()->addWidget(detail_);
    connect(toggle_, &QPushButton::clicked, this, &BackendRow::toggleBackend);
    connect(&engine_, &TranslationEngine::isRunningChanged, this, &BackendRow::refresh);
    connect(&engine_, &TranslationEngine::statusMessageChanged, this, &BackendRow::refresh);
    connect(&engine_, &TranslationEngine::statusDetailChanged, this, &BackendRow::refresh);
    connect(&l10n_, &L10n::currentChanged, this, &BackendRow::refresh);
    refresh();
}

void BackendRow::refresh() {
    ORV_ON_MAIN();
    status_->setText(engine_.statusMessage());
    detail_->setText(engine_.statusDetail());
    detail_->setVisible(!detail_->text().isEmpty());
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
