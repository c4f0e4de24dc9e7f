#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>

namespace orv {

// Google's Cloud Speech-to-Text v1, synchronous recognition.

inline const QString googleRecognitionHost = QStringLiteral("https://speech.googleapis.com");

/// The locale that the service expects for a language code of the settings.
QString googleLocale(const QString& code);

/// The address with the key as given; invalid when that spells none.
QUrl googleRecognitionUrl(const QString& endpoint, const QString& apiKey);

/// The body of a request; `audioBase64` is 16-bit mono PCM without a header in standard Base64,
/// `locale` as in `googleLocale`.
QByteArray googleRecognitionBody(const QByteArray& audioBase64, const QString& locale,
                                 std::int64_t sampleRate);

/// The trimmed text of an answer's first result; empty when the answer holds none, nothing when it
/// is not JSON.
std::optional<QString> parseGoogleRecognition(const QByteArray& body);

} // namespace orv
