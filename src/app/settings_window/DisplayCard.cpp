#include "GeneralTab.h"

#include "ColorField.h"
#include "DefaultsStore.h"
#include "L10n.h"
#include "OverlayKeys.h"
#include "OverlayPreview.h"
#include "PageSlider.h"
#include "Pieces.h"
#include "Quantities.h"
#include "TabParts.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

void addColor(Card& card, const TabContext& context, const OverlayColor& color,
              const QString& key) {
    Bindings& bindings = context.bindings;
    const DefaultsStore& store = context.environment.store;
    auto* field = new ColorField(&card);
    QLabel* label = card.addField(field);
    bindings.translated(field, [&bindings, label, field, key] {
        nameField(label, field, bindings.text(key));
        field->setName(bindings.text(key));
    });
    bindings.bind(field,
                  bindings.storedColor(color.key, [color, &store] { return color.read(store); }));
}

void addOpacity(Card& card, const TabContext& context) {
    Bindings& bindings = context.bindings;
    const DefaultsStore& store = context.environment.store;
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
    bindings.bind(slider, bindings.storedDouble(overlayOpacityKey(), [&store] {
        return OverlayDefaults::opacityValue(store);
    }));
    const auto showPercent = [&bindings, slider, percent] {
        percent->setText(percentText(bindings.language(), slider->value()));
    };
    bindings.follow(percent, {overlayOpacityKey()}, showPercent);
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
    const DefaultsStore& store = context.environment.store;
    card.rows()->addWidget(preview);
    bindings.translated(preview, [preview, context] {
        preview->setAccessibleName(context.bindings.text(u"settings.overlay.preview"_s));
        showSample(*preview, context);
    });
    bindings.follow(preview, {u"showOriginal"_s},
                    [preview, context] { showSample(*preview, context); });
    bindings.follow(
        preview,
        {overlayBackground().key, overlayText().key, overlayBorder().key, overlayBorderEnabledKey(),
         overlayOpacityKey()},
        [preview, &store] { preview->setAppearance(SubtitleAppearance::fromStore(store)); });
}

/// How the subtitles look, with a preview above what changes it.
void addAppearanceCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.overlay.preview"_s);
    addPreview(card, context);
    addSwitch(card, bindings, u"settings.overlay.border"_s,
              bindings.storedBool(overlayBorderEnabledKey(), true));
    addColor(card, context, overlayBackground(), u"settings.overlay.bgcolor"_s);
    addColor(card, context, overlayText(), u"settings.overlay.textcolor"_s);
    addColor(card, context, overlayBorder(), u"settings.overlay.bordercolor"_s);
    addOpacity(card, context);
}

} // namespace

void addDisplayCard(CardColumn& column, const TabContext& context) {
    Bindings& bindings = context.bindings;
    TranslationSettings& settings = context.environment.settings;
    Card& card = *column.addCard();
    addHeading(card, bindings, u"settings.display"_s);
    addSwitch(card, bindings, u"settings.overlay"_s,
              bindings.setting(settings.showOverlay, u"showOverlay"_s));
    addSwitch(card, bindings, u"option.original"_s,
              bindings.setting(settings.showOriginal, u"showOriginal"_s));
    addSwitch(card, bindings, u"option.transcript"_s,
              bindings.setting(settings.saveTranscript, u"saveTranscript"_s));
    addSwitch(card, bindings, u"option.speak"_s,
              bindings.setting(settings.speakTranslation, u"speakTranslation"_s));
    addSwitch(card, bindings, u"settings.autogain"_s,
              bindings.setting(settings.autoGain, u"autoGain"_s));

    addAppearanceCard(column, context);
}

} // namespace orv
