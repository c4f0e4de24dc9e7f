#include "InfoTab.h"

#include "Bindings.h"
#include "Card.h"
#include "CardColumn.h"
#include "EngineCatalogue.h"
#include "EngineFields.h"
#include "LanguageManager.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "TranslationSettings.h"
#include "UpdateControl.h"
#include "UpdateRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int pictureSide = 56;

/// A row with a name, the text of `key`, and a value.
QLabel* addFact(Card& card, Bindings& bindings, const QString& key) {
    auto* value = new QLabel(&card);
    value->setTextFormat(Qt::PlainText);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    value->setWordWrap(true);
    QLabel* name = card.addField(value);
    name->setForegroundRole(QPalette::PlaceholderText);
    bindings.translated(name, key);
    return value;
}

void addTitle(Card& card, Bindings& bindings) {
    auto* picture = new QLabel(&card);
    picture->setPixmap(
        appPicture().pixmap(QSize(pictureSide, pictureSide), card.devicePixelRatioF()));
    auto* title = makeTitle(&card);
    auto* subtitle = makeHint(&card);
    bindings.translated(title, u"info.title"_s);
    auto* powered = makeHint(&card);
    bindings.translated(subtitle, u"info.subtitle"_s);
    bindings.translated(powered, u"info.powered"_s);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch(1);
    texts->addWidget(title);
    texts->addWidget(subtitle);
    texts->addWidget(powered);
    texts->addStretch(1);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::large);
    row->addWidget(picture);
    row->addLayout(texts, 1);
    card.rows()->addLayout(row);
}

void addFacts(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    const TranslationSettings& settings = context.environment.settings;
    addFact(card, bindings, u"info.product"_s)->setText(u"Orvane"_s);
    addFact(card, bindings, u"info.version"_s)
        ->setText(context.environment.updates.currentVersion());
    QLabel* recogniser = addFact(card, bindings, u"info.stt"_s);
    QLabel* translator = addFact(card, bindings, u"info.translation"_s);
    const EngineCatalogue& engines = context.environment.engines;
    const auto refresh = [&bindings, &settings, &engines, recogniser, translator] {
        const QString& id = settings.sttEngine.get();
        const EngineDescriptor* engine = engines.find(id);
        recogniser->setText(engine != nullptr ? engineName(*engine, bindings) : id);
        translator->setText(engine != nullptr ? engine->translator : QString());
    };
    bindings.translated(recogniser, refresh);
    bindings.follow(recogniser, {&settings.sttEngine}, refresh);
    addFact(card, bindings, u"info.audioengine"_s)->setText(u"48\u00A0kHz · mono · float32"_s);
    addFact(card, bindings, u"info.capture"_s)->setText(u"PulseAudio / PipeWire"_s);
    addFact(card, bindings, u"info.languages"_s)
        ->setText(QString::number(LanguageManager::allLanguages().size()));
}

} // namespace

QWidget* makeInfoTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    auto* column = new CardColumn;
    Card& about = *column->addCard();
    addTitle(about, bindings);
    about.rows()->addWidget(new UpdateRow(context.environment.updates, bindings, &about));
    Card& facts = *column->addCard();
    facts.setFieldsClose();
    addFacts(facts, context);
    return column;
}

} // namespace orv
