#pragma once

#include "Setting.h"
#include "UILanguage.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QSlider;
class QSpinBox;

namespace orv {

class ColorField;
class DefaultsStore;
class FieldCombo;
class L10n;
class TranslationSettings;

/// A setting as a control sees it. `field` is the name under which a change of it is told.
template <typename T>
struct BoundValue {
    QString field;
    std::function<T()> get;
    std::function<void(const T& value)> set;
};

/// Whether blanks round a text belong to it. Addresses and keys are pasted with some.
enum class Blanks { Kept, Trimmed };

/// Ties the controls of the settings window to their values and texts, both ways: what the user
/// does is stored at once, and what is changed elsewhere shows without being taken for the user's
/// doing. Texts follow the language. Main thread only; outlives the controls' use.
class Bindings : public QObject {
    Q_OBJECT

  public:
    /// `storedKeyWritten` is told about values that have no field in the settings object and are
    /// written here.
    Bindings(TranslationSettings& settings, DefaultsStore& store, L10n& l10n,
             std::function<void(const QString& key)> storedKeyWritten);

    /// A field of the settings object, called `field` there.
    template <typename T>
    BoundValue<T> setting(Setting<T>& setting, const QString& field) {
        return {field, [&setting] { return setting.get(); },
                [&setting](const T& value) { setting.set(value); }};
    }

    // Values that stand in the store only, under `key`: absent they are `fallback`, or `read` tells
    // what they are. A colour is stored in hexadecimal.
    BoundValue<bool> storedBool(const QString& key, bool fallback);
    BoundValue<double> storedDouble(const QString& key, std::function<double()> read);
    BoundValue<QColor> storedColor(const QString& key, std::function<QColor()> read);

    UILanguage language() const;

    /// A localised text.
    QString text(const QString& key) const;

    /// Calls `show` now and whenever the language changes, as long as `context` lives.
    void translated(QObject* context, const std::function<void()>& show);
    void translated(QLabel* label, const QString& key);
    void translated(QAbstractButton* button, const QString& key);

    /// Calls `show` now and whenever one of `fields` changes, as long as `context` lives.
    void follow(QObject* context, const QStringList& fields, const std::function<void()>& show);

    void bind(QCheckBox* box, const BoundValue<bool>& value);
    void bind(QLineEdit* edit, const BoundValue<QString>& value, Blanks blanks);

    /// A port. Stored when it is complete: at the end of typing or by a step.
    void bind(QSpinBox* box, const BoundValue<std::int64_t>& value);
    void bind(FieldCombo* combo, const BoundValue<QString>& value);

    void bind(ColorField* field, const BoundValue<QColor>& value);

    /// A share of 0 to 1, shown in hundredths.
    void bind(QSlider* slider, const BoundValue<double>& value);

  Q_SIGNALS:
    /// A value has been assigned, here or elsewhere.
    void changed(const QString& field);

  private:
    /// What writing a key of the store brings with it.
    void tellWritten(const QString& key);

    DefaultsStore& store_;
    L10n& l10n_;
    const std::function<void(const QString& key)> storedKeyWritten_;
};

} // namespace orv
