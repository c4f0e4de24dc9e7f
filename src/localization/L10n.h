#pragma once

#include "DefaultsStore.h"
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
    /// The language stored under "uiLanguage" in `store` (which must outlive the object); if it is
    /// none of the five, `systemLanguage`; if that is none of the five either, English. The choice
    /// is not written back.
    L10n(DefaultsStore& store, const QString& systemLanguage, QObject* parent = nullptr);

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

    /// Changes the language and writes it to the store under "uiLanguage", also when it is the
    /// current one: from then on the system's language no longer decides.
    void setCurrent(UILanguage language);

  Q_SIGNALS:
    /// The language is another one than before.
    void currentChanged();

  private:
    DefaultsStore& store_;
    UILanguage current_;
    SharedInstance<L10n> sharedInstance_{*this};
};

} // namespace orv
