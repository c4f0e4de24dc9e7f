#include "Bindings.h"

#include "ColorField.h"
#include "DefaultsStore.h"
#include "FieldCombo.h"
#include "HexColor.h"
#include "L10n.h"
#include "TranslationSettings.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr double hundredths = 100.0;

QString tidied(const QString& text, Blanks blanks) {
    return blanks == Blanks::Trimmed ? text.trimmed() : text;
}

} // namespace

Bindings::Bindings(TranslationSettings& settings, DefaultsStore& store, L10n& l10n,
                   std::function<void(const QString& key)> storedKeyWritten)
    : store_(store)
    , l10n_(l10n)
    , storedKeyWritten_(std::move(storedKeyWritten)) {
    connect(&settings, &TranslationSettings::changed, this, &Bindings::changed);
}

void Bindings::tellWritten(const QString& key) {
    if (storedKeyWritten_) {
        storedKeyWritten_(key);
    }
    Q_EMIT changed(key);
}

BoundValue<bool> Bindings::storedBool(const QString& key, bool fallback) {
    return {key, [this, key, fallback] { return store_.boolean(key).value_or(fallback); },
            [this, key](bool value) {
                store_.setBool(key, value);
                tellWritten(key);
            }};
}

BoundValue<double> Bindings::storedDouble(const QString& key, std::function<double()> read) {
    return {key, std::move(read), [this, key](double value) {
                store_.setDouble(key, value);
                tellWritten(key);
            }};
}

BoundValue<QColor> Bindings::storedColor(const QString& key, std::function<QColor()> read) {
    return {key, std::move(read), [this, key](const QColor& value) {
                store_.setString(key, toHexString(value));
                tellWritten(key);
            }};
}

UILanguage Bindings::language() const {
    return l10n_.current();
}

QString Bindings::text(const QString& key) const {
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

void Bindings::follow(QObject* context, const QStringList& fields,
                      const std::function<void()>& show) {
    connect(this, &Bindings::changed, context, [fields, show](const QString& field) {
        if (fields.contains(field)) {
            show();
        }
    });
    show();
}

// In all of these: shown with the control's signals blocked, so that showing is no choice.

void Bindings::bind(QCheckBox* box, const BoundValue<bool>& value) {
    follow(box, {value.field}, [box, value] {
        const QSignalBlocker blocker(box);
        box->setChecked(value.get());
    });
    // Toggled, not clicked: assistive programs switch without a click.
    connect(box, &QCheckBox::toggled, this, [value](bool checked) { value.set(checked); });
}

void Bindings::bind(QLineEdit* edit, const BoundValue<QString>& value, Blanks blanks) {
    follow(edit, {value.field}, [edit, value, blanks] {
        if (tidied(edit->text(), blanks) != value.get()) {
            const QSignalBlocker blocker(edit);
            edit->setText(value.get());
            edit->setCursorPosition(0);
        }
    });
    connect(edit, &QLineEdit::textChanged, this, [value, blanks](const QString& typed) {
        if (const QString wanted = tidied(typed, blanks); wanted != value.get()) {
            value.set(wanted);
        }
    });
}

void Bindings::bind(QSpinBox* box, const BoundValue<std::int64_t>& value) {
    box->setKeyboardTracking(false);
    follow(box, {value.field}, [box, value] {
        const QSignalBlocker blocker(box);
        box->setValue(static_cast<int>(
            std::clamp<std::int64_t>(value.get(), box->minimum(), box->maximum())));
    });
    connect(box, &QSpinBox::valueChanged, this, [value](int number) { value.set(number); });
}

void Bindings::bind(FieldCombo* combo, const BoundValue<QString>& value) {
    follow(combo, {value.field}, [combo, value] {
        const QSignalBlocker blocker(combo);
        combo->setChosen(value.get());
    });
    connect(combo, &FieldCombo::chosen, this, [value](const QString& id) { value.set(id); });
}

void Bindings::bind(ColorField* field, const BoundValue<QColor>& value) {
    follow(field, {value.field}, [field, value] { field->setColor(value.get()); });
    connect(field, &ColorField::chosen, this, [value](const QColor& color) { value.set(color); });
}

void Bindings::bind(QSlider* slider, const BoundValue<double>& value) {
    slider->setRange(0, static_cast<int>(hundredths));
    follow(slider, {value.field}, [slider, value] {
        const QSignalBlocker blocker(slider);
        slider->setValue(
            static_cast<int>(std::lround(std::clamp(value.get(), 0.0, 1.0) * hundredths)));
    });
    connect(slider, &QSlider::valueChanged, this,
            [value](int share) { value.set(share / hundredths); });
}

} // namespace orv
