#include "AzureMessages.h"

#include "ServiceLocales.h"
#include "ServiceRequests.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

ServiceLocales azureLocales() {
    ServiceLocales locales = commonLocales();
    locales.insert({{u"sv"_s, u"sv-SE"_s},
                    {u"da"_s, u"da-DK"_s},
                    {u"no"_s, u"nb-NO"_s},
                    {u"fi"_s, u"fi-FI"_s},
                    {u"el"_s, u"el-GR"_s}});
    return locales;
}

/// Whatever else stood in a region would choose the host that gets the key.
bool isRegionName(const QString& region) {
    return !region.isEmpty() && std::all_of(region.begin(), region.end(), [](QChar c) {
        return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'-');
    });
}

QUrl regionalUrl(QString endpoint, const QString& region, const QString& pathAndQuery) {
    if (!isRegionName(region)) {
        return {};
    }
    return serviceUrl(endpoint.replace(u"{region}"_s, region) + pathAndQuery);
}

std::optional<QJsonObject> successfulAnswer(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isNull()) {
        return std::nullopt;
    }
    const QJsonObject answer = document.object();
    return answer[u"RecognitionStatus"_s].toString() == u"Success" ? answer : QJsonObject();
}

} // namespace

QString azureLocale(const QString& code) {
    static const ServiceLocales locales = azureLocales();
    return localeFrom(locales, code);
}

QUrl azureTranslationUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale, const QString& targetLang) {
    return regionalUrl(endpoint, region,
                       u"/speech/translation/cognitiveservices/v1?from="_s +
                           queryValue(sourceLocale) + u"&to="_s + queryValue(targetLang) +
                           u"&api-version=3.0"_s);
}

QUrl azureRecognitionUrl(const QString& endpoint, const QString& region,
                         const QString& sourceLocale) {
    return regionalUrl(endpoint, region,
                       u"/speech/recognition/conversation/cognitiveservices/v1?language="_s +
                           queryValue(sourceLocale) + u"&format=detailed"_s);
}

QByteArray azureContentType(std::int64_t sampleRate) {
    return "audio/wav; codecs=audio/pcm; samplerate=" + QByteArray::number(sampleRate);
}

std::optional<AzureResult> parseAzureTranslation(const QByteArray& body) {
    const auto answer = successfulAnswer(body);
    if (!answer) {
        return std::nullopt;
    }
    const QJsonValue text = (*answer)[u"DisplayText"_s];
    const QJsonValue translation = (*answer)[u"Translations"_s][0][u"Text"_s];
    if (!text.isString() || !translation.isString()) {
        return AzureResult();
    }
    return AzureResult{text.toString(), translation.toString()};
}

std::optional<QString> parseAzureRecognition(const QByteArray& body) {
    const auto answer = successfulAnswer(body);
    if (!answer) {
        return std::nullopt;
    }
    return (*answer)[u"DisplayText"_s].toString();
}

} // namespace orv
