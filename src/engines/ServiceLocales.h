#pragma once

#include <QHash>
#include <QString>

namespace orv {

/// A place where a service runs, for the settings.
struct ServiceRegion {
    QString identifier;
    QString displayName;
};

/// The locales by which a service knows languages: language code of the settings to locale.
using ServiceLocales = QHash<QString, QString>;

/// What the services that want locales call the same. "auto" is German, because their interfaces
/// cannot detect languages.
ServiceLocales commonLocales();

/// The locale of a language code; one that is not in `locales` becomes "cs" → "cs-CS".
QString localeFrom(const ServiceLocales& locales, const QString& code);

/// Whether a locale's first two characters are the language `code`.
bool isLanguageOf(const QString& code, const QString& locale);

} // namespace orv
