#pragma once

#include "HostLookups.h"
#include "HttpCall.h"
#include "HttpExchange.h"
#include "NetworkPreparation.h"

#include <QNetworkProxy>
#include <QString>
#include <QTcpSocket>
#include <QUrl>

#include <chrono>
#include <memory>
#include <vector>

namespace orv {

/// The program's HTTP client, for HTTP/1.1 with and without TLS. Lives on the main thread and does
/// everything there but what waits or takes long: names are looked up by `HostLookups`, and what
/// the first request needs is made by `NetworkPreparation`. So nothing waits for a server, neither
/// while the program runs nor at its end.
///
/// It works on sockets of its own, since what is demanded of a request is more than the toolkit's
/// access manager promises: that it is sent once, that its connection is closed when its end is
/// told, and that content nobody wants costs no memory.
class HttpClient {
  public:
    enum class Proxies { None, OfTheSystem };

    /// With `AfterAnswer::Keep` connections serve further requests to the same host.
    explicit HttpClient(Proxies proxies, AfterAnswer afterAnswer = AfterAnswer::Close,
                        LookUpHost lookUp = systemLookUp);

    /// Every exchange has gone before.
    ~HttpClient() = default;

    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    /// Sends a request. Whoever does not want its answer any more destroys the exchange.
    std::unique_ptr<HttpExchange> send(HttpCall call, const HttpLimits& limits);

  private:
    friend class HttpExchange;

    struct Kept {
        QString host;
        std::chrono::steady_clock::time_point since;
        std::unique_ptr<QTcpSocket> socket;
    };

    bool isReadyFor(const QUrl& url) const;
    QNetworkProxy proxyFor(const QUrl& url) const;
    void keep(const QUrl& url, std::unique_ptr<QTcpSocket> socket);
    std::unique_ptr<QTcpSocket> takeKept(const QUrl& url);

    AfterAnswer afterAnswer() const { return afterAnswer_; }

    const Proxies proxies_;
    const AfterAnswer afterAnswer_;
    HostLookups lookups_;
    NetworkPreparation preparation_;
    std::vector<Kept> kept_; ///< Oldest first.
};

} // namespace orv
