#include "WhisperTab.h"

#include "BackendTexts.h"
#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "FieldCombo.h"
#include "NearRecognisers.h"
#include "RecogniserCard.h"
#include "Theme.h"
#include "ToneLabel.h"
#include "TranslationSettings.h"
#include "WhisperModelManager.h"
#include "WhisperModelRow.h"
#include "WhisperModels.h"
#include "WhisperPackageRow.h"
#include "WhisperPackages.h"

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

/// Looks at what there is whenever it comes to show: it may have been changed elsewhere.
class LookingColumn : public CardColumn {
  public:
    explicit LookingColumn(const TabContext& context)
        : models_(context.models)
        , recognisers_(context.environment.recognisers) {}

  protected:
    void showEvent(QShowEvent* event) override {
        CardColumn::showEvent(event);
        models_.refreshDownloadedModels();
        recognisers_.refresh();
    }

  private:
    WhisperModelManager& models_;
    NearRecognisers& recognisers_;
};

/// What runs the models, and what people miss without it.
void addPackages(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    WhisperPackages& packages = context.environment.packages;
    addHeading(card, bindings, u"settings.whisper.packages"_s);
    addHint(card, bindings, u"settings.whisper.packages.hint"_s);
    card.rows()->setSpacing(space::medium);
    const WhisperInventory both = nothingOfWhisper();
    for (const WhisperPackage& package : both.packages) {
        card.rows()->addWidget(new WhisperPackageRow(package.name, packages, bindings, &card));
    }
}

/// Says what a download waits for, as long as it does.
void addPackageHint(Card& card, const TabContext& context) {
    QLabel* hint = addHint(card, context.bindings, u"settings.whisper.needs.package"_s);
    const auto refresh = [hint, &models = context.models] {
        hint->setVisible(!models.canDownload());
    };
    QObject::connect(&context.models, &WhisperModelManager::changed, hint, refresh);
    refresh();
}

/// Says which model serves instead of the chosen one, or that none does. What to do about it stands
/// in the other cards.
void addUse(Card& card, const TabContext& context) {
    auto* use = new ToneLabel(&card, Tone::Busy);
    card.rows()->addWidget(use);
    const auto refresh = [use, &models = context.models, &bindings = context.bindings] {
        const BackendText why = backendText(
            models.whyOther(), [&bindings](const QString& key) { return bindings.text(key); });
        use->setText(why.summary);
        use->setVisible(!why.summary.isEmpty());
    };
    QObject::connect(&context.models, &WhisperModelManager::changed, use, refresh);
    context.bindings.translated(use, refresh);
}

} // namespace

QWidget* makeWhisperTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    Setting<QString>& model = context.environment.settings.whisperModel;
    auto* column = new LookingColumn(context);

    Card& choice = *column->addCard();
    addHeading(choice, bindings, u"settings.whisper"_s);
    addHint(choice, bindings, u"settings.whisper.subtitle"_s);
    auto* chosen = new FieldCombo(FieldCombo::Search::None, &choice);
    bindings.follow(chosen, {&model}, [chosen, &model] {
        chosen->setEntries(modelEntries(model.get()), model.get());
    });
    QObject::connect(chosen, &FieldCombo::chosen, &bindings,
                     [&model, &models = context.models](const QString& id) {
                         model.set(id);
                         models.refreshDownloadedModels();
                     });
    addNamedField(choice, bindings, chosen, u"settings.whisper.current"_s);
    addUse(choice, context);
    addHint(choice, bindings, u"settings.whisper.tip"_s);

    addPackages(*column->addCard(), context);

    Card& list = *column->addCard();
    addHeading(list, bindings, u"settings.whisper.model"_s);
    addPackageHint(list, context);
    list.rows()->setSpacing(space::medium);
    for (const WhisperModel& offered : whisperModels()) {
        list.rows()->addWidget(new WhisperModelRow(offered, context.models, bindings, &list));
    }
    column->addCard(new RecogniserCard(context.environment.recognisers, bindings, column));
    return column;
}

} // namespace orv
