#include "GoogleCloudMessages.h"

#include "ServiceLanguages.h"
#include "ServiceLocales.h"
#include "ServiceRequests.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {

QString googleLocale(const QString& code) {
    static const ServiceLocales locales = commonLocales();
    return localeFrom(locales, code);
}

QString googleSpokenLocale(const QString& code) {
    const ServiceLanguage* known = serviceLanguage(code);
    const bool isUsual = commonLocales().contains(code);
    return isUsual || known == nullptr ? googleLocale(code)
                                       : QString::fromUtf16(known->googleLocale);
}

namespace {

/// The first reason in an error's details, such as "API_KEY_INVALID".
QString reasonOf(const QJsonObject& error) {
    const QJsonArray details = error[u"details"_s].toArray();
    for (const auto& detail : details) {
        if (QString reason = detail[u"reason"_s].toString(); !reason.isEmpty()) {
            return reason;
        }
    }
    // The older interface of the translation.
    return error[u"errors"_s][0][u"reason"_s].toString();
}

ServiceFault::Kind kindOf(int status, const QString& name, const QString& reason,
                          const QString& said) {
    using Kind = ServiceFault::Kind;
    const auto mentions = [&](const QString& word) {
        return said.contains(word, Qt::CaseInsensitive);
    };
    if (reason.startsWith(u"API_KEY_INVALID") || reason == u"keyInvalid" ||
        reason == u"CREDENTIALS_MISSING" || name == u"UNAUTHENTICATED") {
        return Kind::KeyRefused;
    }
    if (name == u"RESOURCE_EXHAUSTED" || mentions(u"limit exceeded"_s) || mentions(u"quota"_s)) {
        return Kind::QuotaUsedUp;
    }
    if (status == 400 && mentions(u"language"_s)) {
        return Kind::LanguageUnknown;
    }
    return faultOfStatus(status).value_or(Kind::ServiceFailed);
}

} // namespace

std::optional<ServiceFault> googleFault(int status, const QByteArray& body) {
    if (!faultOfStatus(status)) {
        return std::nullopt;
    }
    const QJsonObject error = QJsonDocument::fromJson(body).object()[u"error"_s].toObject();
    const QString said = error[u"message"_s].toString();
    return ServiceFault{kindOf(status, error[u"status"_s].toString(), reasonOf(error), said), said};
}

std::optional<ServiceFault> googleKeyFault(const HttpOutcome& answer) {
    if (auto fault = googleFault(answer.status, answer.body)) {
        return fault;
    }
    if (!QJsonDocument::fromJson(answer.body).isObject()) {
        return ServiceFault{ServiceFault::Kind::Unreadable};
    }
    return std::nullopt;
}

QUrl googleRecognitionUrl(const QString& endpoint, const QString& apiKey) {
    return serviceUrl(endpoint + u"/v1/speech:recognize?key="_s + apiKey);
}

QByteArray googleRecognitionBody(const QByteArray& audioBase64, const QString& locale,
                                 std::int64_t sampleRate) {
    const QJsonObject config{{u"encoding"_s, u"LINEAR16"_s},
                             {u"sampleRateHertz"_s, static_cast<qint64>(sampleRate)},
                             {u"languageCode"_s, locale},
                             {u"enableAutomaticPunctuation"_s, true}};
    // Base64 needs no escaping; a chunk is large, and the JSON writer slow with large strings.
    return R"({"audio":{"content":")" + audioBase64 + R"("},"config":)" +
           QJsonDocument(config).toJson(QJsonDocument::Compact) + '}';
}

std::optional<QString> parseGoogleRecognition(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isNull()) {
        return std::nullopt;
    }
    return document.object()[u"results"_s][0][u"alternatives"_s][0][u"transcript"_s]
        .toString()
        .trimmed();
}

} // namespace orv
