#include "DeepgramMessages.h"

#include "ServiceRequests.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

QUrl deepgramUrl(const QString& endpoint, std::int64_t sampleRate, const QString& sourceLang) {
    QStringList query{u"encoding=linear16"_s,    u"sample_rate=%1"_s.arg(sampleRate),
                      u"channels=1"_s,           u"model=nova-2"_s,
                      u"interim_results=true"_s, u"punctuate=true"_s,
                      u"smart_format=true"_s};
    if (sourceLang != u"auto") {
        query.append(u"language="_s + queryValue(sourceLang));
    }
    return serviceUrl(endpoint + u"/v1/listen?"_s + query.join(u'&'));
}

QString deepgramKeepAlive() {
    return uR"({"type":"KeepAlive"})"_s;
}

QString deepgramCloseStream() {
    return uR"({"type":"CloseStream"})"_s;
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
