#include "EnginesTab.h"

#include "EngineFields.h"
#include "EngineOptions.h"
#include "EngineRow.h"
#include "Pieces.h"
#include "TabParts.h"
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
    Setting<QString>& engine = context.environment.settings.sttEngine;
    auto* rows = new QWidget(&card);
    auto* list = new QVBoxLayout(rows);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(0);
    card.rows()->addWidget(rows);
    bindings.translated(rows, [&bindings, rows] {
        rows->setAccessibleName(bindings.text(u"settings.engine.select"_s));
    });
    for (const EngineOption& option : engineOptions()) {
        auto* row = new EngineRow(option, rows);
        list->addWidget(row);
        bindings.translated(row, [&bindings, row, option] {
            row->setTexts(engineName(option, bindings), bindings.text(option.detailKey));
        });
        bindings.follow(row, {&engine}, [row, &engine] {
            const QSignalBlocker blocker(row);
            row->setChecked(engine.get() == row->engineId());
        });
        QObject::connect(row, &EngineRow::toggled, &bindings, [row, &engine](bool chosen) {
            if (chosen) {
                engine.set(row->engineId());
            }
        });
    }
}

} // namespace

QWidget* makeEnginesTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    const TranslationSettings& settings = context.environment.settings;
    auto* column = new CardColumn;
    Card& list = *column->addCard();
    addHeading(list, bindings, u"settings.engine.select"_s);
    addRows(list, context);
    auto* info = new ToneLabel(&list);
    list.rows()->addWidget(info);
    bindings.follow(info, {&settings.sttEngine}, [info, &settings] {
        info->setText(engineInfoText(settings.sttEngine.get()));
        info->setVisible(!info->text().isEmpty());
    });
    addHint(list, bindings, u"settings.engine.vad.hint"_s);
    for (const EngineOption& option : engineOptions()) {
        addEngineFields(*column, context, option);
    }
    return column;
}

} // namespace orv
