#include "GeneralTab.h"

#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "ColorField.h"
#include "L10n.h"
#include "OverlayDefaults.h"
#include "OverlayPreview.h"
#include "PageSlider.h"
#include "QuantityTexts.h"
#include "TextLabels.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

void addColor(Card& card, Bindings& bindings, Setting<QString>& color, const QString& key) {
    auto* field = new ColorField(&card);
    QLabel* label = card.addField(field);
    bindings.translated(field, [&bindings, label, field, key] {
        nameField(label, field, bindings.text(key));
        field->setName(bindings.text(key));
    });
    bindings.bind(field, color);
}

void addOpacity(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    Setting<double>& opacity = context.environment.settings.overlayOpacity;
    auto* field = new QWidget(&card);
    auto* row = new QHBoxLayout(field);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::medium);
    auto* slider = new PageSlider(Qt::Horizontal, field);
    auto* percent = new QLabel(field);
    percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(slider, 1);
    row->addWidget(percent);
    field->setFocusProxy(slider);
    QLabel* label = card.addField(field);
    bindings.bind(slider, opacity);
    const auto showPercent = [&bindings, slider, percent] {
        percent->setText(percentText(bindings.language(), slider->value()));
    };
    bindings.follow(percent, {&opacity}, showPercent);
    bindings.translated(field, [&bindings, label, slider, percent, showPercent] {
        nameField(label, slider, bindings.text(u"settings.overlay.opacity"_s));
        const QString longest = percentText(bindings.language(), 100);
        percent->setMinimumWidth(percent->fontMetrics().horizontalAdvance(longest));
        showPercent();
    });
}

/// The same sentence in the interface's language and in another one, as a translation would be.
void showSample(OverlayPreview& preview, const TabContext& context) {
    const auto current = context.environment.l10n.current();
    const UILanguage other =
        current == UILanguage::English ? UILanguage::German : UILanguage::English;
    const QString key = u"app.subtitle"_s;
    const QString original = L10n::strings().at(other).text(key).value_or(QString());
    preview.setTexts(context.environment.settings.showOriginal.get() ? original : QString(),
                     context.bindings.text(key));
}

void addPreview(Card& card, const TabContext& context) {
    auto* preview = new OverlayPreview(&card);
    Bindings& bindings = context.bindings;
    const TranslationSettings& settings = context.environment.settings;
    card.rows()->addWidget(preview);
    bindings.translated(preview, [preview, context] {
        preview->setAccessibleName(context.bindings.text(u"settings.overlay.preview"_s));
        showSample(*preview, context);
    });
    bindings.follow(preview, {&settings.showOriginal},
                    [preview, context] { showSample(*preview, context); });
    bindings.follow(preview, OverlayDefaults::settings(settings), [preview, &settings] {
        preview->setAppearance(SubtitleAppearance::fromSettings(settings));
    });
}

/// How the subtitles look, with a preview above what changes it.
void addAppearanceCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.overlay.preview"_s);
    addPreview(card, context);
    addSwitch(card, bindings, u"settings.overlay.border"_s, settings.overlayBorderEnabled);
    addColor(card, bindings, settings.overlayBgColor, u"settings.overlay.bgcolor"_s);
    addColor(card, bindings, settings.overlayTextColor, u"settings.overlay.textcolor"_s);
    addColor(card, bindings, settings.overlayBorderColor, u"settings.overlay.bordercolor"_s);
    addOpacity(card, context);
}

} // namespace

void addDisplayCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.display"_s);
    addSwitch(card, bindings, u"settings.overlay"_s, settings.showOverlay);
    addSwitch(card, bindings, u"option.original"_s, settings.showOriginal);
    addSwitch(card, bindings, u"option.transcript"_s, settings.saveTranscript);
    addSwitch(card, bindings, u"option.speak"_s, settings.speakTranslation);
    addSwitch(card, bindings, u"settings.autogain"_s, settings.autoGain);

    addAppearanceCard(column, context);
}

} // namespace orv
