#include "DeepgramMessages.h"

#include "ServiceLanguages.h"
#include "ServiceRequests.h"
#include "UpgradeCall.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// `language` may be empty: then the service's default applies.
QUrl listenUrl(const QString& endpoint, std::int64_t sampleRate, const QString& model,
               const QString& language) {
    QStringList query{u"encoding=linear16"_s,    u"sample_rate=%1"_s.arg(sampleRate),
                      u"channels=1"_s,           u"model="_s + model,
                      u"interim_results=true"_s, u"punctuate=true"_s,
                      u"smart_format=true"_s};
    if (!language.isEmpty()) {
        query.append(u"language="_s + queryValue(language));
    }
    if (language == u"multi") {
        query.append(u"endpointing=100"_s); // As the service advises for it.
    }
    return serviceUrl(endpoint + u"/v1/listen?"_s + query.join(u'&'));
}

} // namespace

bool deepgramOffers(const QString& sourceLang) {
    const ServiceLanguage* known = serviceLanguage(sourceLang);
    return known == nullptr || known->isInNova2 || known->isInNova3 || known->isInNova3Multi;
}

QUrl deepgramUrl(const QString& endpoint, std::int64_t sampleRate, const QString& sourceLang) {
    return listenUrl(endpoint, sampleRate, u"nova-2"_s,
                     sourceLang == u"auto" ? QString() : sourceLang);
}

QUrl deepgramStreamUrl(const QString& endpoint, std::int64_t sampleRate,
                       const QString& sourceLang) {
    const ServiceLanguage* known = serviceLanguage(sourceLang);
    const bool isOnlyDetected =
        known != nullptr && !known->isInNova2 && !known->isInNova3 && known->isInNova3Multi;
    if (sourceLang == u"auto" || isOnlyDetected) {
        return listenUrl(endpoint, sampleRate, u"nova-3"_s, u"multi"_s);
    }
    if (known == nullptr) {
        return deepgramUrl(endpoint, sampleRate, sourceLang);
    }
    const QString language = QString::fromUtf16(known->deepgram);
    return known->isInNova2 ? deepgramUrl(endpoint, sampleRate, language)
                            : listenUrl(endpoint, sampleRate, u"nova-3"_s, language);
}

QString deepgramKeepAlive() {
    return uR"({"type":"KeepAlive"})"_s;
}

QString deepgramCloseStream() {
    return uR"({"type":"CloseStream"})"_s;
}

ServiceFault deepgramRefusal(int status, const QByteArray& error, const QByteArray& body) {
    using Kind = ServiceFault::Kind;
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    const QString code = object[u"err_code"_s].toString();
    const QString told = object[u"err_msg"_s].toString();
    const QString said = told.isEmpty() ? QString::fromUtf8(error) : told;
    Kind kind = faultOfStatus(status).value_or(Kind::Unreadable);
    if (code == u"INSUFFICIENT_PERMISSIONS") {
        kind = Kind::NotAllowed;
    } else if (status == 400 && said.contains(u"language"_s, Qt::CaseInsensitive)) {
        kind = Kind::LanguageUnknown;
    }
    return {kind, said};
}

std::optional<ServiceFault> deepgramHandshakeFault(const HttpOutcome& answer) {
    if (answer.status == switchingProtocols) {
        return std::nullopt;
    }
    return deepgramRefusal(answer.status, headerIn(answer.headers, "dg-error"), answer.body);
}

ServiceFault deepgramClosing(int closeCode, const QString& reason) {
    using Kind = ServiceFault::Kind;
    switch (closeCode) {
    case 1008: // What came was not the sound that was announced.
        return {Kind::RequestRefused, reason};
    case 1002: // Ours: what came was no message.
    case 1007:
    case 1009:
    case 1011:
    case 1012:
    case 1013:
        return {Kind::ServiceFailed, reason};
    default:
        return {Kind::NetworkFailed, reason};
    }
}

bool deepgramIsLast(const QByteArray& message) {
    return QJsonDocument::fromJson(message).object()[u"type"_s].toString() == u"Metadata";
}

QString deepgramTranscript(const QByteArray& message) {
    const QJsonObject result = QJsonDocument::fromJson(message).object();
    if (result[u"type"_s].toString() != u"Results") {
        return {};
    }
    const QJsonArray alternatives = result[u"channel"_s][u"alternatives"_s].toArray();
    const bool onlyObjects = std::all_of(alternatives.begin(), alternatives.end(),
                                         [](const QJsonValue& one) { return one.isObject(); });
    if (alternatives.isEmpty() || !onlyObjects || !result[u"is_final"_s].toBool()) {
        return {};
    }
    return alternatives[0][u"transcript"_s].toString();
}

} // namespace orv
