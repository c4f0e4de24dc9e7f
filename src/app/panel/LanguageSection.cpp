#include "LanguageSection.h"

#include "FieldCombo.h"
#include "L10n.h"
#include "LanguageManager.h"
#include "Pieces.h"
#include "SymbolView.h"
#include "Symbols.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int arrowSide = 14;

QList<FieldEntry> languageEntries() {
    QList<FieldEntry> entries;
    for (const Language& language : LanguageManager::allLanguages()) {
        entries.append({.id = language.code, .text = language.flag % u' ' % language.name});
    }
    return entries;
}

} // namespace

LanguageSection::LanguageSection(TranslationSettings& settings, L10n& l10n, QWidget* parent)
    : Card(parent)
    , settings_(settings)
    , l10n_(l10n)
    , sourceLabel_(new QLabel(this))
    , source_(new FieldCombo(FieldCombo::Search::ByTyping, this))
    , targetLabel_(new QLabel(this))
    , target_(new FieldCombo(FieldCombo::Search::ByTyping, this)) {
    layOut();
    connectFields();
    translate();
}

void LanguageSection::layOut() {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(space::small);
    grid->setVerticalSpacing(space::tiny);
    grid->addWidget(sourceLabel_, 0, 0);
    grid->addWidget(targetLabel_, 0, 2);
    grid->addWidget(source_, 1, 0);
    grid->addWidget(new SymbolView(symbol(u"arrow.right"_s), arrowSide, this), 1, 1);
    grid->addWidget(target_, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);
    rows()->addLayout(grid);
}

void LanguageSection::connectFields() {
    connect(source_, &FieldCombo::chosen, this,
            [this](const QString& code) { settings_.sourceLang.set(code); });
    connect(target_, &FieldCombo::chosen, this,
            [this](const QString& code) { settings_.targetLang.set(code); });
    connect(&settings_, &TranslationSettings::changed, this, [this](const QString& key) {
        if (key == "sourceLang"_L1) {
            source_->setChosen(settings_.sourceLang.get());
        } else if (key == "targetLang"_L1) {
            target_->setChosen(settings_.targetLang.get());
        }
    });
    connect(&l10n_, &L10n::currentChanged, this, &LanguageSection::translate);
}

void LanguageSection::translate() {
    nameField(sourceLabel_, source_, l10n_.platformText(u"lang.source"_s));
    nameField(targetLabel_, target_, l10n_.platformText(u"lang.target"_s));
    QList<FieldEntry> languages = languageEntries();
    const QString available =
        QString::number(languages.size()) % u' ' % l10n_.platformText(u"lang.available"_s);
    source_->setToolTip(available);
    target_->setToolTip(available);
    target_->setEntries(languages, settings_.targetLang.get());
    languages.prepend({.id = u"auto"_s, .text = l10n_.platformText(u"lang.auto"_s)});
    source_->setEntries(languages, settings_.sourceLang.get());
}

} // namespace orv
