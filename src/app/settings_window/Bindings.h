#pragma once

#include "Setting.h"
#include "UILanguage.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QSlider;
class QSpinBox;

namespace orv {

class ColorField;
class FieldCombo;
class L10n;

/// Whether blanks round a text belong to it. Addresses and keys are pasted with some.
enum class Blanks { Kept, Trimmed };

/// Ties the controls of the settings window to their values and texts, both ways: what the user
/// does is stored at once, and what is changed elsewhere shows without being taken for the user's
/// doing. Texts follow the language. Main thread only; outlives the controls' use.
class Bindings : public QObject {
    Q_OBJECT

  public:
    explicit Bindings(L10n& l10n);

    UILanguage language() const;

    /// A localised text.
    QString text(const QString& key) const;

    /// Calls `show` now and whenever the language changes, as long as `context` lives.
    void translated(QObject* context, const std::function<void()>& show);
    void translated(QLabel* label, const QString& key);
    void translated(QAbstractButton* button, const QString& key);

    /// Calls `show` now and whenever one of `settings` is assigned, as long as `context` lives.
    void follow(QObject* context, const std::vector<const AnySetting*>& settings,
                const std::function<void()>& show);

    void bind(QCheckBox* box, Setting<bool>& setting);
    void bind(QLineEdit* edit, Setting<QString>& setting, Blanks blanks);

    /// A port. Stored when it is complete: at the end of typing or by a step.
    void bind(QSpinBox* box, Setting<std::int64_t>& setting);
    void bind(FieldCombo* combo, Setting<QString>& setting);

    /// A colour of the subtitles, in hexadecimal.
    void bind(ColorField* field, Setting<QString>& setting);

    /// A share of 0 to 1, shown in hundredths.
    void bind(QSlider* slider, Setting<double>& setting);

  private:
    L10n& l10n_;
};

} // namespace orv
