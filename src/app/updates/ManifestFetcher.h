#pragma once

#include "HttpClient.h"
#include "UpdateInfo.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QUrl>

#include <chrono>
#include <memory>

namespace orv {

/// The largest manifest that is read, bytes.
inline constexpr qint64 largestManifest = 262'144;

/// How many times the server may send us on.
inline constexpr int mostRedirections = 5;

/// Whether the name of `url`'s host is one of those that never lead anywhere (RFC 6761,
/// "invalid"), so that nobody needs to be asked.
bool leadsNowhere(const QUrl& url);

/// Fetches manifests over HTTP and HTTPS, one at a time. Lives on the main thread.
class ManifestFetcher : public QObject {
    Q_OBJECT

  public:
    /// `agent` is how the program introduces itself.
    explicit ManifestFetcher(const QByteArray& agent);

    /// Fetches one manifest, never from a cache; `fetched` follows later, once. Failures are: no
    /// whole answer within `limit`, no connection or no trusted one, an answer that is not HTTP, a
    /// status outside 200 to 299, more than `largestManifest` bytes, a body that is no manifest,
    /// too many redirections, and one that leads to another scheme or from HTTPS to HTTP. Ends with
    /// the object, without an answer.
    void fetch(const QUrl& url, std::chrono::milliseconds limit);

  Q_SIGNALS:
    /// Whoever hears of it may fetch the next one.
    void fetched(const orv::DecodedUpdateInfo& result);

  private:
    void ask(const QUrl& url);
    void answered(const HttpOutcome& outcome);

    const QByteArray agent_;
    HttpClient http_{HttpClient::Proxies::OfTheSystem};
    QUrl url_; ///< Whom the exchange asks.
    QDeadlineTimer deadline_;
    int redirections_ = 0;
    std::unique_ptr<HttpExchange> exchange_; ///< Goes before the client.
};

} // namespace orv
