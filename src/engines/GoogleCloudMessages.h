#pragma once

#include "HttpCall.h"
#include "ServiceFault.h"

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

/// The locale by which Google really knows the language: the usual ones, else its own list. Empty
/// when it lacks the language; by rule for a code that nobody knows.
QString googleSpokenLocale(const QString& code);

/// What is wrong by an answer of its recognition or its translation; nothing for a success.
std::optional<ServiceFault> googleFault(int status, const QByteArray& body);

/// The same for a question that is to show whether a key works: what is no answer of the service is
/// a fault, too.
std::optional<ServiceFault> googleKeyFault(const HttpOutcome& answer);

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
