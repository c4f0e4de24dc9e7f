#include "EngineFields.h"

#include "ElidedLabel.h"
#include "EngineOptions.h"
#include "FieldCombo.h"
#include "KeyField.h"
#include "Pieces.h"
#include "PortField.h"
#include "ServiceLocales.h"
#include "SettingsActions.h"
#include "TabParts.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Fills the card of one engine.
class EngineCard {
  public:
    EngineCard(Card& card, const TabContext& context, const EngineOption& option)
        : card_(card)
        , context_(context)
        , bindings_(context.bindings)
        , settings_(context.environment.settings)
        , section_(
              [&bindings = context.bindings, option] { return engineName(option, bindings); }) {
        QLabel* heading = card.addHeading();
        bindings_.translated(heading,
                             [heading, section = section_] { heading->setText(section()); });
    }

    /// `product` names the service where it is not the engine's own.
    void addKey(Setting<QString>& key, const QString& product = {}) {
        auto* edit = new KeyField(&card_);
        QLabel* label = card_.addField(edit);
        bindings_.translated(
            edit, [&bindings = bindings_, label, edit, product, section = section_] {
                const QString own = bindings.text(u"settings.engine.apikey"_s);
                const QString text = product.isEmpty() ? own : QString(product + u": "_s + own);
                const QString reveal = bindings.text(u"settings.engine.apikey.show"_s);
                nameField(label, edit, text);
                edit->setNames(section() + u": "_s + text,
                               section() + u": "_s +
                                   (product.isEmpty() ? QString() : product + u": "_s) + reveal,
                               reveal);
            });
        bindings_.bind(edit->edit(), key, Blanks::Trimmed);
    }

    void addText(Setting<QString>& text, const QString& key, const QString& placeholderKey = {}) {
        auto* edit = new QLineEdit(&card_);
        bindings_.bind(edit, text, Blanks::Trimmed);
        addNamedField(card_, bindings_, edit, key, section_);
        if (!placeholderKey.isEmpty()) {
            bindings_.translated(edit, [&bindings = bindings_, edit, placeholderKey] {
                edit->setPlaceholderText(bindings.text(placeholderKey));
            });
        }
    }

    void addPort(Setting<std::int64_t>& port, const QString& key) {
        auto* box = new PortField(&card_);
        bindings_.bind(box, port);
        addNamedField(card_, bindings_, box, key, section_);
    }

    /// A place out of a list. One that is stored but not in the list stays and is offered, too.
    void addPlaces(Setting<QString>& place, const QString& key,
                   std::span<const ServiceRegion> places) {
        auto* combo = new FieldCombo(FieldCombo::Search::ByTyping, &card_);
        const auto refresh = [combo, &place, places] {
            const QSignalBlocker blocker(combo);
            combo->setEntries(entries(places, place.get()), place.get());
        };
        bindings_.follow(combo, {&place}, refresh);
        QObject::connect(combo, &FieldCombo::chosen, &bindings_,
                         [&place](const QString& id) { place.set(id); });
        addNamedField(card_, bindings_, combo, key, section_);
    }

    void addServiceAccount() {
        auto* path = new ElidedLabel(&card_);
        auto* choose = makeButton(&card_);
        auto* clear = makeButton(&card_);
        QLabel* name = makeHeading(&card_);
        name->setFont(card_.font());
        bindings_.translated(name, u"settings.engine.service_account"_s);
        card_.rows()->addWidget(name);
        auto* row = new QHBoxLayout;
        row->setSpacing(space::small);
        row->addWidget(path, 1);
        row->addWidget(choose);
        row->addWidget(clear);
        card_.rows()->addLayout(row);
        bindings_.translated(choose, u"settings.engine.choose_file"_s);
        bindings_.translated(clear, u"settings.engine.clear_file"_s);
        const auto refresh = [&bindings = bindings_, &settings = settings_, path, clear] {
            const QString& file = settings.googleServiceAccountPath.get();
            path->setAccessibleName(bindings.text(u"settings.engine.service_account"_s));
            path->setText(file.isEmpty() ? bindings.text(u"settings.engine.no_file"_s) : file);
            clear->setEnabled(!file.isEmpty());
        };
        bindings_.translated(static_cast<QObject*>(path), refresh);
        bindings_.follow(path, {&settings_.googleServiceAccountPath}, refresh);
        SettingsActions& actions = context_.actions;
        QObject::connect(choose, &QPushButton::clicked, &card_,
                         [&actions] { actions.pickServiceAccountJSON(); });
        QObject::connect(clear, &QPushButton::clicked, &card_,
                         [&actions] { actions.clearServiceAccount(); });
    }

    void addHint(const QString& key) { orv::addHint(card_, bindings_, key); }

  private:
    static QList<FieldEntry> entries(std::span<const ServiceRegion> places, const QString& chosen) {
        QList<FieldEntry> list;
        for (const ServiceRegion& place : places) {
            list.append({place.identifier, place.displayName});
        }
        keepChosen(list, chosen);
        return list;
    }

    Card& card_;
    const TabContext& context_;
    Bindings& bindings_;
    TranslationSettings& settings_;
    SectionName section_;
};

/// Google translates for the engines that do not translate themselves.
void addTranslationKey(EngineCard& card, TranslationSettings& settings) {
    card.addKey(settings.googleApiKey, u"Google Translate"_s);
}

void fill(EngineCard& card, const QString& engine, TranslationSettings& settings) {
    if (engine == "deepgram"_L1) {
        card.addKey(settings.deepgramApiKey);
        addTranslationKey(card, settings);
        card.addHint(u"settings.engine.deepgram.hint"_s);
    } else if (engine == "assemblyai"_L1) {
        card.addKey(settings.assemblyaiApiKey);
        addTranslationKey(card, settings);
        card.addHint(u"settings.engine.assemblyai.hint"_s);
    } else if (engine == "google_rest"_L1) {
        card.addKey(settings.googleApiKey);
        card.addHint(u"settings.engine.google_rest.hint"_s);
    } else if (engine == "google_grpc"_L1) {
        card.addServiceAccount();
        card.addText(settings.googleProjectId, u"settings.engine.project_id"_s,
                     u"settings.engine.project_id.optional"_s);
        card.addPlaces(settings.googleLocation, u"settings.engine.location"_s, googleLocations());
        addTranslationKey(card, settings);
        card.addHint(u"settings.engine.google_grpc.hint"_s);
    } else if (engine == "azure"_L1) {
        card.addKey(settings.azureApiKey);
        card.addPlaces(settings.azureRegion, u"settings.engine.region"_s, azureRegions());
        card.addHint(u"settings.engine.azure.hint"_s);
    } else if (engine == "vosk"_L1) {
        card.addText(settings.voskHost, u"settings.vrc.host"_s);
        card.addPort(settings.voskPort, u"settings.vrc.port"_s);
        card.addHint(u"settings.engine.vosk.hint"_s);
    }
}

} // namespace

QString engineName(const EngineOption& option, const Bindings& bindings) {
    return option.nameKey.isEmpty() ? option.name : bindings.text(option.nameKey);
}

void addEngineFields(CardColumn& column, const TabContext& context, const EngineOption& option) {
    if (option.id == "whisper"_L1) {
        return; // Its models have a tab of their own.
    }
    TranslationSettings& settings = context.environment.settings;
    Card* card = column.addCard();
    EngineCard fields(*card, context, option);
    fill(fields, option.id, settings);
    context.bindings.follow(card, {&settings.sttEngine}, [card, &settings, id = option.id] {
        card->setVisible(settings.sttEngine.get() == id);
    });
}

} // namespace orv
