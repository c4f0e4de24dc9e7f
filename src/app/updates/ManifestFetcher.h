#pragma once

#include "UpdateInfo.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>

namespace orv {

/// The largest manifest that is read, bytes.
inline constexpr qint64 largestManifest = 262'144;

/// How many times the server may send us on.
inline constexpr int mostRedirections = 5;

/// Whether the name of `url`'s host is one of those that never lead anywhere (RFC 6761,
/// "invalid"), so that nobody needs to be asked.
bool leadsNowhere(const QUrl& url);

/// Fetches manifests over HTTP and HTTPS. Lives on the thread it is made on, which must have an
/// event loop; making it may take a while, since it readies what HTTPS needs.
class ManifestFetcher : public QObject {
    Q_OBJECT

  public:
    /// `agent` is how the program introduces itself.
    explicit ManifestFetcher(const QByteArray& agent);

    using Done = std::function<void(const DecodedUpdateInfo& result)>;

    /// Fetches one manifest, never from a cache, and calls `done` later, once. Failures are: no
    /// whole answer within `limit`, no connection or no trusted one, an answer that is not HTTP, a
    /// status outside 200 to 299, more than `largestManifest` bytes, a body that is no manifest,
    /// too many redirections, and one that leads to another scheme or from HTTPS to HTTP. Ends with
    /// the object, without an answer.
    void fetch(const QUrl& url, std::chrono::milliseconds limit, const Done& done);

  private:
    QNetworkAccessManager network_;
    QByteArray agent_;
};

} // namespace orv
