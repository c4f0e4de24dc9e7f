#include "EnginesTab.h"

#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "EngineCatalogue.h"
#include "EngineFields.h"
#include "EngineRow.h"
#include "Theme.h"
#include "ToneLabel.h"
#include "TranslationSettings.h"

#include <QButtonGroup>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

void addRows(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    Setting<QString>& chosen = context.environment.settings.sttEngine;
    auto* rows = new QWidget(&card);
    auto* list = new QVBoxLayout(rows);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(0);
    card.rows()->addWidget(rows);
    bindings.translated(rows, [&bindings, rows] {
        rows->setAccessibleName(bindings.text(u"settings.engine.select"_s));
    });
    for (const EngineDescriptor& engine : context.environment.engines.engines()) {
        auto* row = new EngineRow(engine, rows);
        list->addWidget(row);
        bindings.translated(row, [&bindings, row, &engine] {
            row->setTexts(engineName(engine, bindings), bindings.text(engine.detailKey));
        });
        bindings.follow(row, {&chosen}, [row, &chosen] {
            const QSignalBlocker blocker(row);
            row->setChecked(chosen.get() == row->engineId());
        });
        QObject::connect(row, &EngineRow::toggled, &bindings, [row, &chosen](bool checked) {
            if (checked) {
                chosen.set(row->engineId());
            }
        });
    }
}

} // namespace

QWidget* makeEnginesTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    const TranslationSettings& settings = context.environment.settings;
    const EngineCatalogue& engines = context.environment.engines;
    auto* column = new CardColumn;
    Card& list = *column->addCard();
    addHeading(list, bindings, u"settings.engine.select"_s);
    addRows(list, context);
    auto* info = new ToneLabel(&list);
    list.rows()->addWidget(info);
    bindings.follow(info, {&settings.sttEngine}, [info, &settings, &engines] {
        info->setText(engineInfoText(engines, settings.sttEngine.get()));
        info->setVisible(!info->text().isEmpty());
    });
    addHint(list, bindings, u"settings.engine.vad.hint"_s);
    for (const EngineDescriptor& engine : engines.engines()) {
        addEngineFields(*column, context, engine);
    }
    return column;
}

} // namespace orv
