#pragma once

#include "HttpCall.h"
#include "ServiceFault.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>

namespace orv {

// Azure's speech services over REST: one wave file in, one answer out.

/// The hosts; "{region}" stands for the region's identifier.
inline const QString azureRecognitionHost =
    QStringLiteral("https://{region}.stt.speech.microsoft.com");
inline const QString azureTranslationHost =
    QStringLiteral("https://{region}.s2s.speech.microsoft.com");

inline const QString azureTokenHost =
    QStringLiteral("https://{region}.api.cognitive.microsoft.com");

inline const QString azureTranslatorHost =
    QStringLiteral("https://api.cognitive.microsofttranslator.com");

/// The locale that Azure expects for a language code of the settings, by rule where it is none of
/// the usual ones.
QString azureLocale(const QString& code);

/// The locale by which Azure really knows the language: the usual ones, else its own list. Empty
/// when it lacks the language; by rule for a code that nobody knows.
QString azureSpokenLocale(const QString& code);

/// The rate of the sound that recognition is documented for, Hz.
inline constexpr std::int64_t azureSampleRate = 16000;

/// The address for recognising speech and translating it; invalid when `region` is not the name of
/// a region. `sourceLocale` as in `azureLocale`.
QUrl azureTranslationUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale, const QString& targetLang);

/// The address for recognising speech only.
QUrl azureRecognitionUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale);

/// The address of the translation of texts. `sourceLang` and `targetLang` are codes of the
/// settings; what the service calls otherwise is called so.
QUrl azureTranslatorUrl(const QString& endpoint, const QString& sourceLang,
                        const QString& targetLang);

/// The content of a request to it.
QByteArray azureTranslatorBody(const QString& text);

/// The text in its answer; nothing when there is none.
std::optional<QString> parseAzureTranslator(const QByteArray& body);

/// Its name, for people.
inline const QString azureTranslatorName = QStringLiteral("Azure Translator");

/// What is wrong by an answer without a translation. A key that is good for recognition, as it has
/// just shown, and refused here does not include translation.
ServiceFault azureTranslatorFault(int status, const QByteArray& body);

/// What is wrong by an answer about speech; nothing for a success, and where nothing was heard.
std::optional<ServiceFault> azureFault(int status, const QByteArray& body);

/// The address of a token for a key, which is given for nothing; invalid as above.
QUrl azureTokenUrl(const QString& endpoint, const QString& region);

/// Why no token was given; nothing where one was.
std::optional<ServiceFault> azureTokenFault(const HttpOutcome& answer);

/// The content type of a wave file at this rate.
QByteArray azureContentType(std::int64_t sampleRate);

/// What an answer says; both texts empty when nothing was recognised.
struct AzureResult {
    QString text;
    QString translation;

    friend bool operator==(const AzureResult&, const AzureResult&) = default;
};

/// The answer to a translation request; nothing when the body is not JSON.
std::optional<AzureResult> parseAzureTranslation(const QByteArray& body);

/// The text in the answer to a recognition request; nothing when the body is not JSON. A detailed
/// answer carries it in its best guess.
std::optional<QString> parseAzureRecognition(const QByteArray& body);

} // namespace orv
