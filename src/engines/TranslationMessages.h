#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace orv {

// Google's Cloud Translation v2 REST interface.

inline const QString translationHost = QStringLiteral("https://translation.googleapis.com");

/// The address with the key as given; invalid when that spells none.
QUrl translationUrl(const QString& endpoint, const QString& apiKey);

/// The address of the list of languages, which is free; as above.
QUrl translationLanguagesUrl(const QString& endpoint, const QString& apiKey);

/// The body of a request. The service detects the source language.
QByteArray translationRequestBody(const QString& text, const QString& targetLang);

/// The text in an answer, as it is; empty when the answer holds none, nothing when it is not JSON.
std::optional<QString> parseTranslation(const QByteArray& body);

/// The same, empty for everything that is not a translation.
QString translatedTextFromResponse(const QByteArray& body);

} // namespace orv
