#include "BackendMessages.h"

#include "Pcm16.h"

#include <QJsonArray>
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

/// A text, or a number as it is written.
std::optional<QString> parameter(const QJsonValue& value) {
    if (value.isString()) {
        return value.toString();
    }
    if (!value.isDouble()) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> number = wholeNumber(value);
    return number ? QString::number(*number) : QString::number(value.toDouble());
}

QList<BackendNotice> parseNotices(const QJsonValue& value) {
    QList<BackendNotice> notices;
    const QJsonArray array = value.toArray();
    for (const auto& each : array) {
        const BackendNotice notice = parseNotice(each.toObject());
        if (!notice.code.isEmpty() && notices.size() < mostNotices) {
            notices.append(notice);
        }
    }
    return notices;
}

DownstreamMessage parseStatus(const QJsonObject& object) {
    StatusMessage status;
    status.status = object[u"status"_s].toString();
    status.message = object[u"message"_s].toString();
    if (status.status == u"backend_version") {
        status.version = wholeNumber(object[u"version"_s]);
    }
    status.notice = parseNotice(object);
    status.recognition = parseNotices(object[u"recognition"_s]);
    status.translation = parseNotices(object[u"translation"_s]);
    return status;
}

} // namespace

BackendNotice parseNotice(const QJsonObject& object) {
    BackendNotice notice{.code = object[u"code"_s].toString()};
    const QJsonObject parameters = object[u"parameters"_s].toObject();
    for (auto each = parameters.begin(); each != parameters.end(); ++each) {
        if (const std::optional<QString> text = parameter(each.value())) {
            notice.parameters.insert(each.key(), *text);
        }
    }
    return notice;
}

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
