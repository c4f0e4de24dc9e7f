#pragma once

#include "BackendLink.h"
#include "BackendMessageHandler.h"
#include "WebSocketSender.h"

#include <QObject>
#include <QTimer>
#include <QWebSocket>

#include <deque>
#include <utility>

namespace orv {

class EventLoopThread;

/// The WebSocket of a `BackendLink`. Lives on the link thread and is touched only there. It
/// destroys itself when it has closed, and at the latest when its thread ends.
class BackendSocket : public QObject {
  public:
    /// Starts connecting. A child of `thread`, the link thread.
    BackendSocket(EventLoopThread& thread, const QUrl& url, BackendMessageHandler messages,
                  BackendLink::Timings timings);
    ~BackendSocket() override;

    void send(QByteArray message, BackendLink::Sent sent);
    void close();

  private:
    void receiveMessage(const QByteArray& utf8);
    void onConnected();
    void onBytesWritten();
    void onDisconnected();
    void fail(const QString& error);
    void failPending(const QString& error);
    bool hasRoomFor(const QByteArray& message) const;

    EventLoopThread& thread_;
    QWebSocket webSocketTask_; ///< The one connection; a new link makes a new one.
    WebSocketSender sender_{webSocketTask_};
    QTimer timer_;
    BackendMessageHandler messages_;
    BackendLink::Timings timings_;
    std::deque<std::pair<QByteArray, BackendLink::Sent>> waitingForConnection_;
    qint64 bytesForConnection_ = 0; ///< Of these.
    std::deque<BackendLink::Sent> waitingForNetwork_;
    QString failure_;
    bool connected_ = false;
    bool closing_ = false;
};

} // namespace orv
