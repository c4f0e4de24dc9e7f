#pragma once

#include "BackendLink.h"
#include "WebSocketSender.h"

#include <QObject>
#include <QTimer>
#include <QWebSocket>

#include <deque>
#include <utility>

namespace orv {

/// The WebSocket behind a `BackendLink`. Lives on the link thread and is touched only there. It
/// destroys itself once `close` is through, and ends with its parent.
class BackendSocket : public QObject {
  public:
    /// Run on the link thread.
    struct Events {
        std::function<void(DownstreamMessage message)> message;
        std::function<void(QString error)> failed;
    };

    BackendSocket(const QUrl& url, Events events, BackendLink::Timings timings, QObject* parent);
    ~BackendSocket() override;

    void send(QByteArray message, BackendLink::Sent sent);
    void close();

  private:
    void onConnected();
    void onBytesWritten();
    void onDisconnected();
    void fail(const QString& error);
    void failPending(const QString& error);

    QWebSocket socket_;
    WebSocketSender sender_{socket_};
    QTimer timer_;
    Events events_;
    BackendLink::Timings timings_;
    std::deque<std::pair<QByteArray, BackendLink::Sent>> waitingForConnection_;
    std::deque<BackendLink::Sent> waitingForNetwork_;
    QString failure_;
    bool connected_ = false;
    bool closing_ = false;
};

} // namespace orv
