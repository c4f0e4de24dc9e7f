#include "WhisperTab.h"

#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "FieldCombo.h"
#include "Theme.h"
#include "TranslationSettings.h"
#include "WhisperModelManager.h"
#include "WhisperModelRow.h"
#include "WhisperModels.h"

#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The models, and the chosen one in any case: a store may name another.
QList<FieldEntry> modelEntries(const QString& chosen) {
    QList<FieldEntry> entries;
    for (const WhisperModel& model : whisperModels()) {
        entries.append({model.id, model.name});
    }
    keepChosen(entries, chosen);
    return entries;
}

} // namespace

QWidget* makeWhisperTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    Setting<QString>& model = context.environment.settings.whisperModel;
    auto* column = new CardColumn;

    Card& choice = *column->addCard();
    addHeading(choice, bindings, u"settings.whisper"_s);
    addHint(choice, bindings, u"settings.whisper.subtitle"_s);
    auto* chosen = new FieldCombo(FieldCombo::Search::None, &choice);
    bindings.follow(chosen, {&model}, [chosen, &model] {
        chosen->setEntries(modelEntries(model.get()), model.get());
    });
    QObject::connect(chosen, &FieldCombo::chosen, &bindings,
                     [&model](const QString& id) { model.set(id); });
    addNamedField(choice, bindings, chosen, u"settings.whisper.current"_s);
    addHint(choice, bindings, u"settings.whisper.tip"_s);

    Card& list = *column->addCard();
    addHeading(list, bindings, u"settings.whisper.model"_s);
    list.rows()->setSpacing(space::medium);
    for (const WhisperModel& offered : whisperModels()) {
        list.rows()->addWidget(new WhisperModelRow(offered, context.models, bindings, &list));
    }
    context.models.refreshDownloadedModels();
    return column;
}

} // namespace orv
