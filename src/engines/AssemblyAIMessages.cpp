#include "AssemblyAIMessages.h"

#include "ServiceRequests.h"

#include <QJsonDocument>
#include <QJsonObject>

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

} // namespace orv
