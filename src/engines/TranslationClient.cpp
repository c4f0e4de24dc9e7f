#include "TranslationClient.h"

#include "ReplyFinished.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

QString translatedTextFromResponse(const QByteArray& body) {
    return QJsonDocument::fromJson(body)
        .object()[u"data"_s][u"translations"_s][0][u"translatedText"_s]
        .toString();
}

QByteArray translationRequestBody(const QString& text, const QString& targetLang) {
    return QJsonDocument(
               QJsonObject{{u"q"_s, text}, {u"target"_s, targetLang}, {u"format"_s, u"text"_s}})
        .toJson(QJsonDocument::Compact);
}

TranslationClient::TranslationClient(ServiceEndpoints endpoints, std::chrono::milliseconds timeout)
    : endpoints_(std::move(endpoints))
    , timeout_(timeout) {}

TranslationClient::~TranslationClient() {
    // Aborting resumes the coroutines that wait for the replies, which must happen while the
    // replies still exist.
    const auto replies = network_.findChildren<QNetworkReply*>();
    for (QNetworkReply* reply : replies) {
        reply->abort();
    }
}

QCoro::Task<QString> TranslationClient::googleTranslateText(QString text, QString targetLang,
                                                            QString apiKey) {
    const QUrl url(endpoints_.googleTranslate + u"/language/translate/v2?key="_s + apiKey,
                   QUrl::StrictMode);
    if (!url.isValid()) {
        co_return QString();
    }
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setTransferTimeout(static_cast<int>(timeout_.count()));
    QNetworkReply* reply = network_.post(request, translationRequestBody(text, targetLang));
    co_await ReplyFinished(*reply);
    const QByteArray body = reply->readAll();
    reply->deleteLater();
    co_return translatedTextFromResponse(body);
}

} // namespace orv
