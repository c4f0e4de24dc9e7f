#include "BackendMessages.h"

#include "Pcm16.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

std::optional<std::int64_t> wholeNumber(const QJsonValue& value) {
    constexpr std::int64_t notAnInteger = -1;
    constexpr std::int64_t notAnIntegerEither = -2;
    const std::int64_t number = value.toInteger(notAnInteger);
    if (!value.isDouble() || number != value.toInteger(notAnIntegerEither)) {
        return std::nullopt;
    }
    return number;
}

DownstreamMessage parseStatus(const QJsonObject& object) {
    StatusMessage status;
    status.status = object[u"status"_s].toString();
    status.message = object[u"message"_s].toString();
    if (status.status == u"backend_version") {
        status.version = wholeNumber(object[u"version"_s]);
    }
    return status;
}

} // namespace

QByteArray audioMessage(std::span<const float> samples, int sampleRate) {
    const QByteArray data = pcm16(samples).toBase64();
    QByteArray message;
    message.reserve(data.size() + 96);
    message.append(R"({"type":"audio","sample_rate":)");
    message.append(QByteArray::number(sampleRate));
    message.append(R"(,"format":"int16","data":")");
    message.append(data);
    message.append(R"("})");
    return message;
}

QByteArray flushMessage() {
    return QByteArrayLiteral(R"({"type":"flush"})");
}

QByteArray stopMessage() {
    return QByteArrayLiteral(R"({"type":"stop"})");
}

DownstreamMessage parseDownstream(const QByteArray& utf8) {
    const QJsonDocument document = QJsonDocument::fromJson(utf8);
    if (!document.isObject()) {
        return {};
    }
    const QJsonObject object = document.object();
    const QString type = object[u"type"_s].toString();
    if (type == u"translation") {
        return Result{object[u"original"_s].toString(), object[u"translation"_s].toString()};
    }
    if (type == u"status") {
        return parseStatus(object);
    }
    if (type == u"processed") {
        return ProcessedMessage{};
    }
    if (type == u"flushed") {
        return FlushedMessage{};
    }
    return {};
}

} // namespace orv
