#pragma once

#include <QString>

#include <span>

namespace orv {

/// The locale that Azure expects for a language code of the settings. "auto" is German, because the
/// interface cannot detect languages; an unknown code becomes "cs" → "cs-CS".
QString azureLocale(const QString& code);

/// The same for Google's synchronous recognition.
QString googleLocale(const QString& code);

/// Whether a locale's first two characters are the language `code`.
bool isLanguageOf(const QString& code, const QString& locale);

/// A place where a service runs, for the settings.
struct ServiceRegion {
    QString identifier;
    QString displayName;
};

/// The regions of Azure's speech services, in the order in which they are offered.
std::span<const ServiceRegion> azureRegions();

/// The locations of Google's streaming recognition, in the order in which they are offered.
std::span<const ServiceRegion> googleLocations();

} // namespace orv
