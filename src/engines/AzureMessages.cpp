#include "AzureMessages.h"

#include "ServiceLanguages.h"
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

QString azureSpokenLocale(const QString& code) {
    const ServiceLanguage* known = serviceLanguage(code);
    const bool isUsual = azureLocales().contains(code);
    return isUsual || known == nullptr ? azureLocale(code) : QString::fromUtf16(known->azureLocale);
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
    const QString best = (*answer)[u"NBest"_s][0][u"Display"_s].toString();
    return best.isEmpty() ? (*answer)[u"DisplayText"_s].toString() : best;
}

namespace {

QString translatorName(const QString& code) {
    const ServiceLanguage* known = serviceLanguage(code);
    const QString name = known != nullptr ? QString::fromUtf16(known->azureTranslator) : QString();
    return name.isEmpty() ? code : name;
}

/// What an answer says of itself where it is no success.
struct AzureError {
    explicit AzureError(const QByteArray& body) {
        const QJsonValue error = QJsonDocument::fromJson(body).object()[u"error"_s];
        const QJsonValue number = error[u"code"_s];
        code = number.isString() ? number.toString().toInt() : number.toInt();
        said = error[u"message"_s].toString();
    }

    int code = 0;
    QString said;
};

/// Of the outcomes of a recognition those that are not about what was heard.
std::optional<ServiceFault::Kind> faultOfOutcome(const QString& outcome) {
    using Kind = ServiceFault::Kind;
    if (outcome == u"Error") {
        return Kind::ServiceFailed;
    }
    if (outcome == u"TooManyRequests") {
        return Kind::TooManyRequests;
    }
    if (outcome == u"BadRequest") {
        return Kind::RequestRefused;
    }
    if (outcome == u"Forbidden") {
        return Kind::NotAllowed;
    }
    return std::nullopt;
}

} // namespace

QUrl azureTranslatorUrl(const QString& endpoint, const QString& sourceLang,
                        const QString& targetLang) {
    QString query = u"/translate?api-version=3.0&to="_s + queryValue(translatorName(targetLang));
    if (sourceLang != u"auto") {
        query += u"&from="_s + queryValue(translatorName(sourceLang));
    }
    return serviceUrl(endpoint + query);
}

QByteArray azureTranslatorBody(const QString& text) {
    return QJsonDocument(QJsonArray{QJsonObject{{u"Text"_s, text}}}).toJson(QJsonDocument::Compact);
}

std::optional<QString> parseAzureTranslator(const QByteArray& body) {
    const QJsonValue text =
        QJsonDocument::fromJson(body).array().at(0)[u"translations"_s][0][u"text"_s];
    return text.isString() ? std::optional(text.toString()) : std::nullopt;
}

ServiceFault azureTranslatorFault(int status, const QByteArray& body) {
    using Kind = ServiceFault::Kind;
    const AzureError error(body);
    ServiceFault fault{faultOfStatus(status).value_or(Kind::Unreadable), error.said,
                       azureTranslatorName};
    switch (error.code) {
    case 400019:
    case 400023:
    case 400035:
    case 400036:
        fault.kind = Kind::LanguageUnknown;
        break;
    case 403001:
        fault.kind = Kind::QuotaUsedUp;
        break;
    default:
        break;
    }
    if (fault.kind == Kind::KeyRefused || fault.kind == Kind::NotAllowed) {
        return ServiceFault{Kind::NotTranslated};
    }
    return fault;
}

std::optional<ServiceFault> azureFault(int status, const QByteArray& body) {
    using Kind = ServiceFault::Kind;
    const QString outcome =
        QJsonDocument::fromJson(body).object()[u"RecognitionStatus"_s].toString();
    if (const auto byOutcome = faultOfOutcome(outcome)) {
        return ServiceFault{*byOutcome, outcome};
    }
    const std::optional<Kind> byStatus = faultOfStatus(status);
    if (!byStatus || !outcome.isEmpty()) {
        return std::nullopt;
    }
    ServiceFault fault{*byStatus, AzureError(body).said};
    const auto mentions = [&fault](const QString& word) {
        return fault.said.contains(word, Qt::CaseInsensitive);
    };
    if (status == 403 && mentions(u"quota"_s)) {
        fault.kind = Kind::QuotaUsedUp;
    } else if (status == 400 && mentions(u"language"_s)) {
        fault.kind = Kind::LanguageUnknown;
    }
    return fault;
}

QUrl azureTokenUrl(const QString& endpoint, const QString& region) {
    return regionalUrl(endpoint, region, u"/sts/v1.0/issueToken"_s);
}

std::optional<ServiceFault> azureTokenFault(const HttpOutcome& answer) {
    if (auto fault = azureFault(answer.status, answer.body)) {
        return fault;
    }
    if (answer.body.isEmpty() || answer.body.startsWith('<')) {
        return ServiceFault{ServiceFault::Kind::Unreadable};
    }
    return std::nullopt;
}

} // namespace orv
