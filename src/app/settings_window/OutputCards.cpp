// The cards of the outputs to other programs: browser overlay, VRChat, vMix.

#include "OutputCards.h"

#include "Bindings.h"
#include "Buttons.h"
#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "CopyButton.h"
#include "FieldCombo.h"
#include "OverlayServer.h"
#include "PortField.h"
#include "Section.h"
#include "SettingsEnvironment.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The send mode that the three choices stand for: everything but 0 and 1 sends both.
QString shownMode(std::int64_t mode) {
    return QString::number(mode == 0 || mode == 1 ? mode : 2);
}

QLabel* addText(Card& card, Bindings& bindings, Setting<QString>& setting, Blanks blanks,
                const QString& key, const SectionName& section) {
    auto* edit = new QLineEdit(&card);
    bindings.bind(edit, setting, blanks);
    return addNamedField(card, bindings, edit, key, section);
}

QLabel* addPort(Card& card, Bindings& bindings, Setting<std::int64_t>& setting, const QString& key,
                const SectionName& section) {
    auto* port = new PortField(&card);
    bindings.bind(port, setting);
    return addNamedField(card, bindings, port, key, section);
}

void addSendMode(Card& card, const TabContext& context, const SectionName& section) {
    Bindings& bindings = context.bindings;
    Setting<std::int64_t>& mode = context.environment.settings.vrchatSendMode;
    auto* modes = new FieldCombo(FieldCombo::Search::None, &card);
    bindings.translated(modes, [&bindings, &mode, modes] {
        modes->setEntries({{u"0"_s, bindings.text(u"settings.vrc.send.original"_s)},
                           {u"1"_s, bindings.text(u"settings.vrc.send.translation"_s)},
                           {u"2"_s, bindings.text(u"settings.vrc.send.both"_s)}},
                          shownMode(mode.get()));
    });
    bindings.follow(modes, {&mode}, [&mode, modes] {
        const QSignalBlocker blocker(modes);
        modes->setChosen(shownMode(mode.get()));
    });
    QObject::connect(modes, &FieldCombo::chosen, &bindings,
                     [&mode](const QString& id) { mode.set(id.toLongLong()); });
    addNamedField(card, bindings, modes, u"settings.vrc.send"_s, section);
}

/// The address with a button that copies it.
void addOverlayAddress(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    const TranslationSettings& settings = context.environment.settings;
    auto* address = new QLineEdit(&card);
    address->setReadOnly(true);
    auto* copy = new CopyButton([address] { return address->text(); }, &card);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(address, 1);
    row->addWidget(copy);
    card.rows()->addLayout(row);
    bindings.translated(copy, [&bindings, copy] {
        copy->setTexts(bindings.text(u"settings.obs.copy"_s),
                       bindings.text(u"settings.obs.copied"_s));
    });
    bindings.translated(address, [&bindings, address] {
        address->setAccessibleName(bindings.text(u"settings.obs.section"_s) + u": URL"_s);
    });
    bindings.follow(address, {&settings.obsOverlayPort}, [address, &settings] {
        address->setText(overlayAddress(settings.obsOverlayPort.get()));
    });
    QObject::connect(copy, &QPushButton::clicked, address, &QLineEdit::selectAll);
}

} // namespace

QString overlayAddress(std::int64_t port) {
    return u"http://localhost:"_s + QString::number(overlayPort(port)) + u"/overlay"_s;
}

namespace {

void addBrowserOverlayCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    const auto& [card, section] = addSection(column, bindings, u"settings.obs.section"_s);
    addSwitch(card, bindings, u"settings.obs.enable"_s, settings.obsOverlayEnabled);
    addPort(card, bindings, settings.obsOverlayPort, u"settings.obs.port"_s, section);
    addOverlayAddress(card, context);
    addHint(card, bindings, u"settings.obs.hint"_s);
}

void addVRChatCard(CardColumn& column, const TabContext& context,
                   const std::function<void()>& sendTest) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    const auto& [card, section] = addSection(column, bindings, u"settings.vrc.section"_s);
    addSwitch(card, bindings, u"settings.vrc.enable"_s, settings.vrchatEnabled);
    addText(card, bindings, settings.vrchatHost, Blanks::Trimmed, u"settings.vrc.host"_s, section);
    addPort(card, bindings, settings.vrchatPort, u"settings.vrc.port"_s, section);
    addSendMode(card, context, section);
    addSwitch(card, bindings, u"settings.vrc.sound"_s, settings.vrchatPlaySound);
    auto* test = makeButton(&card);
    bindings.translated(test, u"settings.vrc.test"_s);
    QObject::connect(test, &QPushButton::clicked, &card, sendTest);
    card.rows()->addWidget(test, 0, Qt::AlignLeft);
    addHint(card, bindings, u"settings.vrc.hint"_s);
}

void addVMixCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    const SectionName section = [] { return u"vMix"_s; };
    Card& card = *column.addCard();
    card.addHeading()->setText(section());
    addSwitch(card, bindings, u"settings.vmix.enable"_s, settings.vmixEnabled);
    addHint(card, bindings, u"settings.vmix.subtitle"_s);
    addHeading(card, bindings, u"settings.vmix.connection"_s);
    QList<QLabel*> labels;
    labels << addText(card, bindings, settings.vmixHost, Blanks::Trimmed, u"settings.vrc.host"_s,
                      section)
           << addPort(card, bindings, settings.vmixPort, u"settings.vrc.port"_s, section)
           << addText(card, bindings, settings.vmixInput, Blanks::Kept,
                      u"settings.vmix.input.hint"_s, section);
    addHeading(card, bindings, u"settings.vmix.fields"_s);
    labels << addText(card, bindings, settings.vmixFieldTranslation, Blanks::Kept,
                      u"settings.vmix.field.translation"_s, section)
           << addText(card, bindings, settings.vmixFieldOriginal, Blanks::Kept,
                      u"settings.vmix.field.original"_s, section);
    alignLabels(bindings, labels);
    addHint(card, bindings, u"settings.vmix.tip"_s);
}

} // namespace

std::vector<OutputCard> outputCards(std::function<void()> sendVRChatTest) {
    return {
        addBrowserOverlayCard,
        [sendTest = std::move(sendVRChatTest)](CardColumn& column, const TabContext& context) {
            addVRChatCard(column, context, sendTest);
        },
        addVMixCard,
    };
}

} // namespace orv
