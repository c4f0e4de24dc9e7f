#include "Bindings.h"

#include "ColorField.h"
#include "FieldCombo.h"
#include "HexColor.h"
#include "L10n.h"
#include "OverlayDefaults.h"
#include "ThreadChecks.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

constexpr double hundredths = 100.0;

QString tidied(const QString& text, Blanks blanks) {
    return blanks == Blanks::Trimmed ? text.trimmed() : text;
}

} // namespace

Bindings::Bindings(L10n& l10n)
    : l10n_(l10n) {}

UILanguage Bindings::language() const {
    return l10n_.current();
}

QString Bindings::text(const QString& key) const {
    ORV_ON_MAIN();
    return l10n_.platformText(key);
}

void Bindings::translated(QObject* context, const std::function<void()>& show) {
    connect(&l10n_, &L10n::currentChanged, context, show);
    show();
}

void Bindings::translated(QLabel* label, const QString& key) {
    translated(label, [this, label, key] { label->setText(text(key)); });
}

void Bindings::translated(QAbstractButton* button, const QString& key) {
    translated(button, [this, button, key] { button->setText(text(key)); });
}

void Bindings::follow(QObject* context, const std::vector<const AnySetting*>& settings,
                      const std::function<void()>& show) {
    watchAll(settings, context, show);
    show();
}

// In all of these: shown with the control's signals blocked, so that showing is no choice.

void Bindings::bind(QCheckBox* box, Setting<bool>& setting) {
    follow(box, {&setting}, [box, &setting] {
        const QSignalBlocker blocker(box);
        box->setChecked(setting.get());
    });
    // Toggled, not clicked: assistive programs switch without a click.
    connect(box, &QCheckBox::toggled, this, [&setting](bool checked) { setting.set(checked); });
}

void Bindings::bind(QLineEdit* edit, Setting<QString>& setting, Blanks blanks) {
    follow(edit, {&setting}, [edit, &setting, blanks] {
        if (tidied(edit->text(), blanks) != setting.get()) {
            const QSignalBlocker blocker(edit);
            edit->setText(setting.get());
            edit->setCursorPosition(0);
        }
    });
    connect(edit, &QLineEdit::textChanged, this, [&setting, blanks](const QString& typed) {
        if (const QString wanted = tidied(typed, blanks); wanted != setting.get()) {
            setting.set(wanted);
        }
    });
}

void Bindings::bind(QSpinBox* box, Setting<std::int64_t>& setting) {
    box->setKeyboardTracking(false);
    follow(box, {&setting}, [box, &setting] {
        const QSignalBlocker blocker(box);
        box->setValue(static_cast<int>(
            std::clamp<std::int64_t>(setting.get(), box->minimum(), box->maximum())));
    });
    connect(box, &QSpinBox::valueChanged, this, [&setting](int number) { setting.set(number); });
}

void Bindings::bind(FieldCombo* combo, Setting<QString>& setting) {
    follow(combo, {&setting}, [combo, &setting] {
        const QSignalBlocker blocker(combo);
        combo->setChosen(setting.get());
    });
    connect(combo, &FieldCombo::chosen, this, [&setting](const QString& id) { setting.set(id); });
}

void Bindings::bind(ColorField* field, Setting<QString>& setting) {
    follow(field, {&setting},
           [field, &setting] { field->setColor(OverlayDefaults::color(setting)); });
    connect(field, &ColorField::chosen, this,
            [&setting](const QColor& color) { setting.set(toHexString(color)); });
}

void Bindings::bind(QSlider* slider, Setting<double>& setting) {
    slider->setRange(0, static_cast<int>(hundredths));
    follow(slider, {&setting}, [slider, &setting] {
        const QSignalBlocker blocker(slider);
        slider->setValue(
            static_cast<int>(std::lround(std::clamp(setting.get(), 0.0, 1.0) * hundredths)));
    });
    connect(slider, &QSlider::valueChanged, this,
            [&setting](int share) { setting.set(share / hundredths); });
}

} // namespace orv
