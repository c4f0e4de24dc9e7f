#include "GeneralTab.h"

#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "ToneLabel.h"
#include "TranslationSettings.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

QWidget* makeGeneralTab(const TabContext& context) {
    auto* column = new CardColumn;
    addLanguageCard(*column, context);
    addBackendCard(*column, context);
    addDisplayCard(*column, context);
    for (const OutputCard& addOutputCard : context.environment.outputCards) {
        addOutputCard(*column, context);
    }
    addNotificationsCard(*column, context);
    return column;
}

void addLanguageCard(CardColumn& column, const TabContext& context) {
    Card& card = *column.addCard();
    auto* languages = new FieldCombo(FieldCombo::Search::None, &card);
    QList<FieldEntry> entries;
    for (const UILanguage language : UILanguage::allCases()) {
        entries.append({language.rawValue(), language.label()});
    }
    L10n& l10n = context.environment.l10n;
    languages->setEntries(entries, l10n.current().rawValue());
    addNamedField(card, context.bindings, languages, u"settings.language"_s);
    context.bindings.translated(
        languages, [languages, &l10n] { languages->setChosen(l10n.current().rawValue()); });
    QObject::connect(languages, &FieldCombo::chosen, &l10n, [&l10n](const QString& code) {
        if (const auto language = UILanguage::fromRawValue(code)) {
            l10n.setCurrent(*language);
        }
    });
}

void addBackendCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.backend"_s);
    addHint(card, bindings, u"settings.backend.tip"_s);
    addSwitch(card, bindings, u"settings.backend.autostart"_s, settings.autoStartBackend);
    addSwitch(card, bindings, u"settings.backend.autostop"_s, settings.autoStopBackend);
    addSwitch(card, bindings, u"settings.continue"_s, settings.continueAfterInterruption);
    addHint(card, bindings, u"settings.continue.hint"_s);
    addSwitch(card, bindings, u"settings.backend.network"_s, settings.networkAccess);
    auto* warning = new ToneLabel(&card, Tone::Error);
    bindings.translated(warning, u"settings.backend.network.warn"_s);
    card.rows()->addWidget(warning);
    addHint(card, bindings, u"settings.backend.network.hint"_s);
    bindings.follow(warning, {&settings.networkAccess},
                    [warning, &settings] { warning->setVisible(settings.networkAccess.get()); });
}

void addNotificationsCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.notifications"_s);
    addSwitch(card, bindings, u"settings.vmix.warn_on_fail"_s, settings.vmixShowConnectionWarnings);
    addHint(card, bindings, u"settings.vmix.warn_on_fail.hint"_s);
}

} // namespace orv
