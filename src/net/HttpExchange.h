#pragma once

#include "HostLookups.h"
#include "HttpAnswer.h"
#include "HttpCall.h"

#include <QHostAddress>
#include <QList>
#include <QNetworkProxy>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace orv {

class ConnectionRace;
class HttpClient;

/// One HTTP request on its way, from the host's name to the end of the answer; `HttpClient::send`
/// makes it. Lives on the main thread, which never waits for it.
///
/// Addresses are tried in the system's order until one takes the connection; see `ConnectionRace`.
/// The request is sent once, unless a kept connection turns out to have been closed meanwhile: then
/// over a new one. Nothing is followed or remembered: a redirection is an answer like any other,
/// since what is sent must not go where nobody has sent it; there are no cookies and no
/// credentials. With HTTPS the server has to show a trusted certificate for the name in the
/// address.
class HttpExchange : public QObject {
    Q_OBJECT

  public:
    /// Closes the connection at once. `ended` does not come any more, not even for an end that has
    /// been reached already.
    ~HttpExchange() override;

  Q_SIGNALS:
    /// Comes once, never within `HttpClient::send`, with the connection closed or kept for others.
    /// Whoever hears of it may destroy the exchange.
    void ended(const orv::HttpOutcome& outcome);

  private:
    friend class HttpClient;

    HttpExchange(HttpClient& client, HttpCall call, const HttpLimits& limits);

    void start();
    void begin();
    void findHost();
    void addressesFound(const HostAnswer& answer);
    void connectToAny(const QList<QHostAddress>& addresses);
    std::unique_ptr<QTcpSocket> connectTo(const QString& peer) const;
    void take(std::unique_ptr<QTcpSocket> socket);
    void beginAnew();

    bool isEncrypted() const;
    quint16 port() const;

    void connected();
    void write();
    void progress();
    void readAnswer();
    void socketFailed(QAbstractSocket::SocketError error);
    void finishIfRead();
    void finish(const QString& error);
    void end();

    HttpClient& client_;
    const HttpCall call_;
    HttpAnswer answer_;
    const bool keepsContent_;
    QTimer whole_;
    QTimer idle_;
    QNetworkProxy proxy_ = QNetworkProxy::NoProxy;
    std::unique_ptr<ConnectionRace> race_;
    std::unique_ptr<QTcpSocket> socket_;
    bool isConnected_ = false;
    bool isReused_ = false; ///< The connection has carried a request before.
    bool hasRead_ = false;
    bool isOver_ = false; ///< `ended` is to come.
    HttpOutcome outcome_;
};

} // namespace orv
