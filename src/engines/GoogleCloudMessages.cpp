#include "GoogleCloudMessages.h"

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
