#include "HttpClient.h"

#include "ThreadChecks.h"

#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

constexpr std::size_t mostKept = 6;

/// An idle connection that is older is not trusted to lead anywhere.
constexpr auto longestKept = 120s;

QString hostOf(const QUrl& url) {
    return url.scheme() % u"://" % url.host() % u':' % QString::number(url.port());
}

} // namespace

HttpClient::HttpClient(Proxies proxies, AfterAnswer afterAnswer, LookUpHost lookUp)
    : proxies_(proxies)
    , afterAnswer_(afterAnswer)
    , lookups_(std::move(lookUp)) {}

std::unique_ptr<HttpExchange> HttpClient::send(HttpCall call, const HttpLimits& limits) {
    ORV_ON_MAIN();
    std::unique_ptr<HttpExchange> exchange(new HttpExchange(*this, std::move(call), limits));
    exchange->start();
    return exchange;
}

bool HttpClient::isReadyFor(const QUrl& url) const {
    const bool asksSystem = proxies_ == Proxies::OfTheSystem || url.scheme() == u"https";
    return !asksSystem || NetworkPreparation::isDone();
}

QNetworkProxy HttpClient::proxyFor(const QUrl& url) const {
    if (proxies_ == Proxies::OfTheSystem) {
        for (const QNetworkProxy& proxy :
             QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url))) {
            if (proxy.capabilities().testFlag(QNetworkProxy::TunnelingCapability)) {
                return proxy;
            }
        }
    }
    return QNetworkProxy::NoProxy;
}

void HttpClient::keep(const QUrl& url, std::unique_ptr<QTcpSocket> socket) {
    if (afterAnswer_ == AfterAnswer::Close || socket->bytesAvailable() > 0) {
        socket->abort();
        return;
    }
    kept_.push_back({hostOf(url), std::chrono::steady_clock::now(), std::move(socket)});
    if (kept_.size() > mostKept) {
        kept_.erase(kept_.begin());
    }
}

std::unique_ptr<QTcpSocket> HttpClient::takeKept(const QUrl& url) {
    const auto now = std::chrono::steady_clock::now();
    std::erase_if(kept_, [&](const Kept& kept) {
        return now - kept.since > longestKept || kept.socket->bytesAvailable() > 0 ||
               kept.socket->state() != QAbstractSocket::ConnectedState;
    });
    const auto found = std::ranges::find(kept_.rbegin(), kept_.rend(), hostOf(url), &Kept::host);
    if (found == kept_.rend()) {
        return nullptr;
    }
    auto socket = std::move(found->socket);
    kept_.erase(std::next(found).base());
    return socket;
}

} // namespace orv
