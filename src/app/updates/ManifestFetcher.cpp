#include "ManifestFetcher.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QNetworkRequest manifestRequest(const QUrl& url, const QByteArray& agent) {
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, agent);
    request.setRawHeader("Accept", "application/json");
    request.setRawHeader("Cache-Control", "no-cache");
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirections);
    return request;
}

DecodedUpdateInfo answerIn(QNetworkReply& reply) {
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299)) {
        return {{}, u"HTTP-Status "_s + QString::number(status.toInt())};
    }
    if (reply.error() != QNetworkReply::NoError) {
        return {{}, reply.errorString()};
    }
    if (!status.isValid()) {
        return {{}, u"keine HTTP-Antwort"_s};
    }
    return decodeUpdateInfo(reply.readAll());
}

} // namespace

bool leadsNowhere(const QUrl& url) {
    QString host = url.host();
    if (host.endsWith(u'.')) {
        host.chop(1);
    }
    return host == u"invalid" || host.endsWith(u".invalid");
}

ManifestFetcher::ManifestFetcher(const QByteArray& agent)
    : agent_(agent) {}

void ManifestFetcher::fetch(const QUrl& url, std::chrono::milliseconds limit, const Done& done) {
    QNetworkReply* reply = network_.get(manifestRequest(url, agent_));
    reply->setParent(this);
    // Bounds the memory; some more than is taken, or too much would never be seen to arrive.
    reply->setReadBufferSize(2 * largestManifest);
    const auto finish = [reply, done](const DecodedUpdateInfo& result) {
        reply->disconnect();
        reply->abort();
        reply->deleteLater();
        done(result);
    };
    const auto checkSize = [reply, finish] {
        const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (announced > largestManifest || reply->bytesAvailable() > largestManifest) {
            finish({{}, u"Antwort zu groß"_s});
        }
    };
    connect(reply, &QNetworkReply::metaDataChanged, reply, checkSize);
    connect(reply, &QNetworkReply::readyRead, reply, checkSize);
    connect(reply, &QNetworkReply::finished, reply, [reply, finish] { finish(answerIn(*reply)); });
    // The timer belongs to the reply and goes with it.
    auto* timer = new QTimer(reply);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, reply, [finish] { finish({{}, u"Zeitüberschreitung"_s}); });
    timer->start(limit);
}

} // namespace orv
