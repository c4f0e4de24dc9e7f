#include "TranslationMessages.h"

#include "ServiceRequests.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {

QUrl translationUrl(const QString& endpoint, const QString& apiKey) {
    return serviceUrl(endpoint + u"/language/translate/v2?key="_s + apiKey);
}

QUrl translationLanguagesUrl(const QString& endpoint, const QString& apiKey) {
    return serviceUrl(endpoint + u"/language/translate/v2/languages?key="_s + apiKey);
}

QByteArray translationRequestBody(const QString& text, const QString& targetLang) {
    return QJsonDocument(
               QJsonObject{{u"q"_s, text}, {u"target"_s, targetLang}, {u"format"_s, u"text"_s}})
        .toJson(QJsonDocument::Compact);
}

std::optional<QString> parseTranslation(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isNull()) {
        return std::nullopt;
    }
    return document.object()[u"data"_s][u"translations"_s][0][u"translatedText"_s].toString();
}

QString translatedTextFromResponse(const QByteArray& body) {
    return parseTranslation(body).value_or(QString());
}

} // namespace orv
