#include "LanguageSection.h"

#include "BackendTexts.h"
#include "Card.h"
#include "EngineCatalogue.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LanguageFilter.h"
#include "LanguageManager.h"
#include "SymbolView.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"
#include "TranslationSettings.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

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

/// What is no language, such as the detection, is found by its text.
bool entryMatches(const FieldEntry& entry, const QString& typed) {
    const QList<Language>& languages = LanguageManager::allLanguages();
    const auto language = std::ranges::find(languages, entry.id, &Language::code);
    return language == languages.end() ? entry.text.contains(typed, Qt::CaseInsensitive)
                                       : languageMatches(*language, typed);
}

} // namespace

LanguageSection::LanguageSection(TranslationSettings& settings, const EngineCatalogue& engines,
                                 L10n& l10n, QWidget* parent)
    : Card(parent)
    , settings_(settings)
    , engines_(engines)
    , l10n_(l10n)
    , heading_(addHeading())
    , sourceLabel_(new QLabel(this))
    , source_(new FieldCombo(FieldCombo::Search::ByTyping, this))
    , targetLabel_(new QLabel(this))
    , target_(new FieldCombo(FieldCombo::Search::ByTyping, this))
    , lack_(new ToneLabel(this, Tone::Error)) {
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
    rows()->addWidget(lack_);
}

void LanguageSection::connectFields() {
    for (FieldCombo* field : {source_, target_}) {
        field->setMatching(entryMatches);
    }
    connect(source_, &FieldCombo::chosen, this,
            [this](const QString& code) { settings_.sourceLang.set(code); });
    connect(target_, &FieldCombo::chosen, this,
            [this](const QString& code) { settings_.targetLang.set(code); });
    watchAll({&settings_.sourceLang, &settings_.targetLang}, this, [this] { showLanguages(); });
    watchAll({&settings_.sourceLang, &settings_.sttEngine}, this, [this] { showLack(); });
    connect(&l10n_, &L10n::currentChanged, this, &LanguageSection::translate);
}

void LanguageSection::translate() {
    ORV_ON_MAIN();
    heading_->setText(l10n_.platformText(u"lang.title"_s));
    nameField(sourceLabel_, source_, l10n_.platformText(u"lang.source"_s));
    nameField(targetLabel_, target_, l10n_.platformText(u"lang.target"_s));
    const QString available = QString::number(LanguageManager::allLanguages().size()) % u' ' %
                              l10n_.platformText(u"lang.available"_s);
    source_->setToolTip(available);
    target_->setToolTip(available);
    showLanguages();
    showLack();
}

void LanguageSection::showLack() {
    ORV_ON_MAIN();
    const EngineDescriptor* engine = engines_.find(settings_.sttEngine.get());
    const bool isLacking =
        engine != nullptr && engine->recognises && !engine->recognises(settings_.sourceLang.get());
    lack_->setVisible(isLacking);
    if (isLacking) {
        const BackendNotice lack{
            .code = u"service.language"_s,
            .parameters = {{u"engine"_s, engine->productName()}, {u"said"_s, QString()}}};
        const auto told =
            backendText(lack, [this](const QString& key) { return l10n_.platformText(key); });
        lack_->setText(told ? QString(told->summary % u".\n" % told->detail) : QString());
    }
}

void LanguageSection::showLanguages() {
    ORV_ON_MAIN();
    const QString& target = settings_.targetLang.get();
    QList<FieldEntry> targets = languageEntries();
    keepChosen(targets, target);
    target_->setEntries(targets, target);
    const QString& source = settings_.sourceLang.get();
    QList<FieldEntry> sources = languageEntries();
    sources.prepend({.id = u"auto"_s, .text = l10n_.platformText(u"lang.auto"_s)});
    keepChosen(sources, source);
    source_->setEntries(sources, source);
}

} // namespace orv
