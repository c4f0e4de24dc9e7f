#include "LanguageSection.h"

#include "FieldCombo.h"
#include "L10n.h"
#include "LanguageManager.h"
#include "Pieces.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QGridLayout>
#include <QLabel>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QList<FieldEntry> languageEntries() {
    QList<FieldEntry> entries;
    for (const Language& language : LanguageManager::allLanguages()) {
        entries.append({.id = language.code, .text = language.flag % u' ' % language.name});
    }
    return entries;
}

} // namespace

LanguageSection::LanguageSection(TranslationSettings& settings, L10n& l10n, QWidget* parent)
    : QWidget(parent)
    , settings_(settings)
    , l10n_(l10n)
    , heading_(makeHeading(this))
    , sourceLabel_(new QLabel(this))
    , source_(new FieldCombo(FieldCombo::Search::ByTyping, this))
    , targetLabel_(new QLabel(this))
    , target_(new FieldCombo(FieldCombo::Search::ByTyping, this)) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(space::small);
    grid->setVerticalSpacing(space::small / 2);
    grid->addWidget(heading_, 0, 0, 1, 2);
    grid->addWidget(sourceLabel_, 1, 0);
    grid->addWidget(targetLabel_, 1, 1);
    grid->addWidget(source_, 2, 0);
    grid->addWidget(target_, 2, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
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
    translate();
}

void LanguageSection::translate() {
    heading_->setText(l10n_.platformText(u"lang.title"_s));
    nameField(sourceLabel_, source_, l10n_.platformText(u"lang.source"_s));
    nameField(targetLabel_, target_, l10n_.platformText(u"lang.target"_s));
    QList<FieldEntry> languages = languageEntries();
    target_->setEntries(languages, settings_.targetLang.get());
    languages.prepend({.id = u"auto"_s, .text = l10n_.platformText(u"lang.auto"_s)});
    source_->setEntries(languages, settings_.sourceLang.get());
}

} // namespace orv
