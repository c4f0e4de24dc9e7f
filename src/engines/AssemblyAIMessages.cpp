#include "AssemblyAIMessages.h"

#include "ServiceRequests.h"
#include "UpgradeCall.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <initializer_list>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QString member(const QByteArray& message, QStringView messageType, const QString& name) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    return object[u"message_type"_s].toString() == messageType ? object[name].toString()
                                                               : QString();
}

} // namespace

QUrl assemblyaiUrl(const QString& endpoint, std::int64_t sampleRate) {
    return serviceUrl(endpoint + u"/v2/realtime/ws?sample_rate=%1"_s.arg(sampleRate));
}

QByteArray assemblyaiAudio(const QByteArray& pcm) {
    return R"({"audio_data":")"_ba + pcm.toBase64() + R"("})"_ba;
}

QString assemblyaiTerminate() {
    return uR"({"terminate_session":true})"_s;
}

QString assemblyaiSession(const QByteArray& message) {
    return member(message, u"SessionBegins", u"session_id"_s);
}

QString assemblyaiTranscript(const QByteArray& message) {
    return member(message, u"FinalTranscript", u"text"_s);
}

bool assemblyaiIsSessionEnd(const QByteArray& message) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    return object[u"message_type"_s].toString() == u"SessionTerminated";
}

bool assemblyaiIsOfVersion2(const QByteArray& message) {
    return QJsonDocument::fromJson(message).object()[u"message_type"_s].isString();
}

bool assemblyaiIsRefusal(const QByteArray& message) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    return !object.contains(u"message_type"_s) && object[u"error"_s].isString();
}

namespace {

bool isIn(std::initializer_list<QStringView> codes, const QString& code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

/// The model that has a language. The largest one has 99, and says what it thinks was spoken.
QString modelFor(const QString& sourceLang) {
    if (sourceLang == u"en") {
        return u"universal-streaming-english"_s;
    }
    if (sourceLang == u"auto" ||
        isIn({u"es", u"de", u"fr", u"pt", u"it", u"tr", u"nl", u"sv", u"no", u"da", u"fi", u"hi",
              u"vi", u"ar", u"he", u"ja", u"ur", u"zh"},
             sourceLang)) {
        return u"universal-3-5-pro"_s;
    }
    return u"whisper-rt"_s;
}

QString typeOf(const QJsonObject& message) {
    return message[u"type"_s].toString();
}

} // namespace

bool assemblyaiFormatsTurns(const QString& sourceLang) {
    return modelFor(sourceLang) == u"universal-streaming-english";
}

QUrl assemblyaiStreamUrl(const QString& endpoint, std::int64_t sampleRate,
                         const QString& sourceLang) {
    const QString model = modelFor(sourceLang);
    QString query =
        u"sample_rate=%1&encoding=pcm_s16le&speech_model=%2&format_turns=true"_s.arg(sampleRate)
            .arg(model);
    if (model == u"universal-3-5-pro" && sourceLang != u"auto") {
        query += u"&language_codes="_s + queryValue(u"[\""_s + sourceLang + u"\"]"_s);
    }
    return serviceUrl(endpoint + u"/v3/ws?"_s + query);
}

QString assemblyaiBegin(const QByteArray& message) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    return typeOf(object) == u"Begin" ? object[u"id"_s].toString() : QString();
}

QString assemblyaiTerminateStream() {
    return uR"({"type":"Terminate"})"_s;
}

bool assemblyaiIsTermination(const QByteArray& message) {
    return typeOf(QJsonDocument::fromJson(message).object()) == u"Termination";
}

std::optional<AssemblyAITurn> parseAssemblyaiTurn(const QByteArray& message) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    if (typeOf(object) != u"Turn") {
        return std::nullopt;
    }
    return AssemblyAITurn{.order = object[u"turn_order"_s].toInt(),
                          .isOver = object[u"end_of_turn"_s].toBool(),
                          .isFormatted = object[u"turn_is_formatted"_s].toBool(),
                          .text = object[u"transcript"_s].toString().trimmed()};
}

std::optional<ServiceFault> assemblyaiError(const QByteArray& message) {
    const QJsonObject object = QJsonDocument::fromJson(message).object();
    // Each version names the type of a message in its own way, and none of a bare error.
    const QString type = typeOf(object) + object[u"message_type"_s].toString();
    const QString said = object[u"error"_s].toString();
    if (said.isEmpty() || !(type.isEmpty() || type == u"Error")) {
        return std::nullopt;
    }
    return assemblyaiClosing(object[u"error_code"_s].toInt(), said);
}

ServiceFault assemblyaiRefusal(const HttpOutcome& answer) {
    const QByteArray body = answer.body.trimmed();
    const auto told = assemblyaiError(body);
    // A page is nothing to show.
    const QString said = told                   ? told->said
                         : body.startsWith('<') ? QString()
                                                : QString::fromUtf8(body);
    return {faultOfStatus(answer.status).value_or(ServiceFault::Kind::Unreadable), said};
}

QUrl assemblyaiTokenUrl(const QString& endpoint) {
    return httpUrl(serviceUrl(endpoint + u"/v3/token?expires_in_seconds=60"_s));
}

std::optional<ServiceFault> assemblyaiTokenFault(const HttpOutcome& answer) {
    if (faultOfStatus(answer.status)) {
        return assemblyaiRefusal(answer);
    }
    const QJsonObject object = QJsonDocument::fromJson(answer.body).object();
    if (!object[u"token"_s].isString()) {
        return ServiceFault{ServiceFault::Kind::Unreadable};
    }
    return std::nullopt;
}

ServiceFault assemblyaiClosing(int closeCode, const QString& reason) {
    using Kind = ServiceFault::Kind;
    const auto mentions = [&](const QString& word) {
        return reason.contains(word, Qt::CaseInsensitive);
    };
    switch (closeCode) {
    case 1008:
    case 4001:
        return {mentions(u"balance"_s) || mentions(u"fund"_s) ? Kind::NoCredit : Kind::KeyRefused,
                reason};
    case 4002:
        return {Kind::NoCredit, reason};
    case 4003:
    case 4105: // An interface that is switched off.
        return {Kind::NotAllowed, reason};
    case 3009:
    case 4029:
    case 4102:
        return {Kind::TooManyRequests, reason};
    case 3006:
    case 3007:
    case 4000:
    case 4032:
    case 4033:
    case 4034:
    case 4100:
    case 4101:
        return {Kind::RequestRefused, reason};
    case 3005:
    case 3008:
    case 4008:
    case 1011:
    case 1013:
        return {Kind::ServiceFailed, reason};
    default:
        return {reason.isEmpty() ? Kind::NetworkFailed : Kind::ServiceFailed, reason};
    }
}

} // namespace orv
