#pragma once

#include "Setting.h"
#include "SharedInstance.h"
#include "StringTable.h"
#include "UILanguage.h"

#include <QObject>
#include <QString>

#include <map>

namespace orv {

/// The language code of the system's locale: "de" for "de_DE.UTF-8". A locale that names no
/// language ("C", "POSIX", nothing) gives "en".
QString languageCode(const QString& localeName);

/// The code of the language the system shows its texts in.
QString systemLanguageCode();

/// Every text of the user interface, by a dotted key, in the current language. Lives on the main
/// thread; views show their texts anew on `currentChanged`.
class L10n : public QObject {
    Q_OBJECT

  public:
    /// Shows the language that `choice` (which must outlive the object) names, now and after each
    /// assignment; if it names none of the five, `systemLanguage`; if that is none of the five
    /// either, English. What follows from that is never written back.
    L10n(Setting<QString>& choice, const QString& systemLanguage, QObject* parent = nullptr);

    /// The process-wide instance: the one there is. Nothing inside the libraries asks for it.
    static L10n& shared();

    /// The tables of all languages, built on first use. Callable from any thread.
    static const std::map<UILanguage::Case, StringTable>& strings();

    /// The text of `key` in the current language, else in English, else the key itself.
    QString s(const QString& key) const;

    /// Like `s`, but takes the variant for the platform the program runs on (on Linux the key with
    /// the suffix ".linux") where the tables hold one.
    QString platformText(const QString& key) const;

    UILanguage current() const { return current_; }

    /// Changes the language by assigning it to the setting, also when it is the current one: from
    /// then on the system's language no longer decides.
    void setCurrent(UILanguage language);

  Q_SIGNALS:
    /// The language is another one than before.
    void currentChanged();

  private:
    UILanguage chosenLanguage() const;
    void followChoice();

    Setting<QString>& choice_;
    const QString systemLanguage_;
    UILanguage current_;
    SharedInstance<L10n> sharedInstance_{*this};
};

} // namespace orv
