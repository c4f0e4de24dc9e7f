#include "EngineFields.h"

#include "Buttons.h"
#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "ElidedLabel.h"
#include "EngineDescriptor.h"
#include "FieldCombo.h"
#include "KeyField.h"
#include "KeyTrialRow.h"
#include "PortField.h"
#include "Section.h"
#include "SettingsActions.h"
#include "TextLabels.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <span>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Fills the card of one engine.
class EngineCard {
  public:
    EngineCard(Card& card, const TabContext& context, const EngineDescriptor& engine)
        : card_(card)
        , context_(context)
        , bindings_(context.bindings)
        , settings_(context.environment.settings)
        , engine_(engine)
        , section_(
              [&bindings = context.bindings, &engine] { return engineName(engine, bindings); }) {
        QLabel* heading = card.addHeading();
        bindings_.translated(heading,
                             [heading, section = section_] { heading->setText(section()); });
    }

    void add(const EngineField& field) {
        switch (field.kind) {
        case EngineField::Kind::Key:
            return addKey(field);
        case EngineField::Kind::ServiceAccount:
            return addServiceAccount(field);
        case EngineField::Kind::Text:
            return addText(field);
        case EngineField::Kind::Port:
            return addPort(field);
        case EngineField::Kind::Place:
            return addPlaces(field);
        }
    }

  private:
    void addKey(const EngineField& field) {
        auto* edit = new KeyField(&card_);
        QLabel* label = card_.addField(edit);
        bindings_.translated(edit, [&bindings = bindings_, label, edit, &field,
                                    section = section_] {
            const QString before = field.product.isEmpty() ? QString() : field.product + u": "_s;
            const QString text = before + bindings.text(field.labelKey);
            const QString reveal = bindings.text(u"settings.engine.apikey.show"_s);
            nameField(label, edit, text);
            edit->setNames(section() + u": "_s + text, section() + u": "_s + before + reveal,
                           reveal);
        });
        bindings_.bind(edit->edit(), settings_.*field.text, Blanks::Trimmed);
        if (field.questions) {
            card_.rows()->addWidget(new KeyTrialRow(trialOf(field), bindings_, section_, &card_));
        }
    }

    KeyTrialRow::Subject trialOf(const EngineField& field) {
        const Setting<QString>& key = settings_.*field.text;
        std::vector<const AnySetting*> asked = {&key};
        for (const EngineField& other : engine_.fields) {
            if (other.config != nullptr && other.text != field.text) {
                asked.push_back(&(settings_.*other.text));
            }
        }
        const bool isEnginesOwn = field.product.isEmpty();
        return {.product = isEnginesOwn ? engine_.productName() : field.product,
                .prefix = isEnginesOwn ? QString() : field.product + u": "_s,
                .key = [&key] { return key.get(); },
                .questions =
                    [&settings = settings_, &engine = engine_, &field,
                     &endpoints = context_.environment.endpoints] {
                        CloudEngineConfig config = engine.configFrom(settings);
                        config.apiKey = (settings.*field.text).get();
                        return field.questions(endpoints, config);
                    },
                .settings = std::move(asked)};
    }

    void addText(const EngineField& field) {
        auto* edit = new QLineEdit(&card_);
        bindings_.bind(edit, settings_.*field.text, Blanks::Trimmed);
        addNamedField(card_, bindings_, edit, field.labelKey, section_);
        if (!field.placeholderKey.isEmpty()) {
            bindings_.translated(edit, [&bindings = bindings_, edit, &field] {
                edit->setPlaceholderText(bindings.text(field.placeholderKey));
            });
        }
    }

    void addPort(const EngineField& field) {
        auto* box = new PortField(&card_);
        bindings_.bind(box, settings_.*field.number);
        addNamedField(card_, bindings_, box, field.labelKey, section_);
    }

    /// A place that is stored but not in the list stays and is offered, too.
    void addPlaces(const EngineField& field) {
        auto* combo = new FieldCombo(FieldCombo::Search::ByTyping, &card_);
        Setting<QString>& place = settings_.*field.text;
        bindings_.follow(combo, {&place}, [combo, &place, places = field.places] {
            const QSignalBlocker blocker(combo);
            combo->setEntries(entries(places, place.get()), place.get());
        });
        QObject::connect(combo, &FieldCombo::chosen, &bindings_,
                         [&place](const QString& id) { place.set(id); });
        addNamedField(card_, bindings_, combo, field.labelKey, section_);
    }

    void addServiceAccount(const EngineField& field) {
        auto* path = new ElidedLabel(&card_);
        auto* choose = makeButton(&card_);
        auto* clear = makeButton(&card_);
        QLabel* name = makeHeading(&card_);
        name->setFont(card_.font());
        bindings_.translated(name, field.labelKey);
        card_.rows()->addWidget(name);
        auto* row = new QHBoxLayout;
        row->setSpacing(space::small);
        row->addWidget(path, 1);
        row->addWidget(choose);
        row->addWidget(clear);
        card_.rows()->addLayout(row);
        bindings_.translated(choose, u"settings.engine.choose_file"_s);
        bindings_.translated(clear, u"settings.engine.clear_file"_s);
        Setting<QString>& file = settings_.*field.text;
        const auto refresh = [&bindings = bindings_, &file, &field, path, clear] {
            path->setAccessibleName(bindings.text(field.labelKey));
            path->setText(file.get().isEmpty() ? bindings.text(u"settings.engine.no_file"_s)
                                               : file.get());
            clear->setEnabled(!file.get().isEmpty());
        };
        bindings_.translated(static_cast<QObject*>(path), refresh);
        bindings_.follow(path, {&file}, refresh);
        SettingsActions& actions = context_.actions;
        QObject::connect(choose, &QPushButton::clicked, &card_,
                         [&actions] { actions.pickServiceAccountJSON(); });
        QObject::connect(clear, &QPushButton::clicked, &card_,
                         [&actions] { actions.clearServiceAccount(); });
    }

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
    const EngineDescriptor& engine_;
    SectionName section_;
};

/// What leaves the computer, and where it goes.
void addDestination(Card& card, Bindings& bindings, const EngineDescriptor& engine) {
    QLabel* hint = makeHint(&card);
    card.rows()->addWidget(hint);
    bindings.translated(static_cast<QObject*>(hint), [hint, &bindings, &engine] {
        hint->setText(bindings.text(u"settings.engine.leaves"_s).arg(engine.soundGoesTo));
    });
}

} // namespace

QString engineName(const EngineDescriptor& engine, const Bindings& bindings) {
    return engine.nameKey.isEmpty() ? engine.name : bindings.text(engine.nameKey);
}

void addEngineFields(CardColumn& column, const TabContext& context,
                     const EngineDescriptor& engine) {
    if (engine.fields.empty()) {
        return;
    }
    Card* card = column.addCard();
    EngineCard fields(*card, context, engine);
    for (const EngineField& field : engine.fields) {
        fields.add(field);
    }
    if (!engine.hintKey.isEmpty()) {
        addHint(*card, context.bindings, engine.hintKey);
    }
    if (!engine.soundGoesTo.isEmpty()) {
        addDestination(*card, context.bindings, engine);
    }
    const Setting<QString>& chosen = context.environment.settings.sttEngine;
    context.bindings.follow(
        card, {&chosen}, [card, &chosen, &engine] { card->setVisible(chosen.get() == engine.id); });
}

} // namespace orv
