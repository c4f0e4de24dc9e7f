#pragma once

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

/// The locale that Azure expects for a language code of the settings.
QString azureLocale(const QString& code);

/// The address for recognising speech and translating it; invalid when `region` is not the name of
/// a region. `sourceLocale` as in `azureLocale`.
QUrl azureTranslationUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale, const QString& targetLang);

/// The address for recognising speech only.
QUrl azureRecognitionUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale);

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

/// The text in the answer to a recognition request; nothing when the body is not JSON.
std::optional<QString> parseAzureRecognition(const QByteArray& body);

} // namespace orv
