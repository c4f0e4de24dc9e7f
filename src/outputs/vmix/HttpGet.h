#pragma once

#include "HostLookups.h"
#include "HttpAnswer.h"

#include <QByteArray>
#include <QObject>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

namespace orv {

/// The HTTP/1.1 request for `url`, whole, after whose answer the server is to close.
QByteArray getRequest(const QUrl& url);

/// One HTTP GET request over a connection of its own, from the host's name to the end of the
/// answer. It has no time limit: whoever has had enough destroys it.
///
/// Any whole answer is success, whatever its status. The answer is read and thrown away, so its
/// size costs no memory. Nothing is followed, remembered or sent along: a redirection is an answer
/// like any other, since the words must not go where the user has not sent them; there are no
/// cookies, no proxies and no credentials.
class HttpGet : public QObject {
    Q_OBJECT

  public:
    /// Told once, never within `start`, with the reason of a failure; empty for a whole answer. May
    /// destroy the request.
    using Done = std::function<void(const QString& error)>;

    /// Addresses are tried in the system's order until one takes the connection.
    HttpGet(QUrl url, Done done);

    /// Closes the connection at once. `done` is not told, not even of an end that has come already.
    ~HttpGet() override;

    /// To be called once. `lookups` are used within the call only.
    void start(HostLookups& lookups);

  private:
    void addressesFound(const HostAnswer& answer);
    void connectToNext();
    void connected();
    void readAnswer();
    void socketFailed(QAbstractSocket::SocketError error);
    void finishIfRead();
    void finish(const QString& error);

    QUrl url_;
    Done done_;
    QList<QHostAddress> addresses_; ///< Those not tried yet.
    QTcpSocket socket_;
    HttpAnswer answer_;
    bool isConnected_ = false;
};

} // namespace orv
