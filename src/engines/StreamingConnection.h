#pragma once

#include "HostLookups.h"
#include "NetworkPreparation.h"
#include "StreamingSocket.h"
#include "WebSocketSender.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>
#include <QWebSocket>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace orv {

/// Outlives its `StreamingSocket` while one of its own events is being handled. The WebSocket's
/// signals only note what happened; coroutines go on from `deliver`, an event of its own, in which
/// everything here may be destroyed.
class StreamingSocket::Connection : public std::enable_shared_from_this<Connection> {
  public:
    explicit Connection(EngineTimings timings)
        : timings_(timings) {}

    void open(const QNetworkRequest& request);
    void release();

    Completion<Message> receive();
    void stopReceiving();
    Completion<QString> sendFrame(WebSocketFrameKind kind, const QByteArray& payload);
    void hurry();
    void awaitEnd();
    void close();

    bool wasAccepted() const { return connected_; }

    bool isOpen() const { return connected_ && !isOver(); }

  private:
    struct Outgoing {
        WebSocketFrameKind kind = WebSocketFrameKind::Text;
        QByteArray payload;
        Completion<QString> sent;
    };

    void connectSignals();
    void connectToService();
    void onConnected();
    void watchTransport();
    void onBytesTaken();
    void settle();
    void ping();
    void take(Message message);
    void fail(const QString& reason, ServiceFault::Kind kind = ServiceFault::Kind::NetworkFailed);
    void fail(Message failure);
    void deliverLater();
    void deliver();
    void answerReader(Message message);
    void completeSends();
    void failSends();

    bool isOver() const { return failure_.has_value(); }

    QWebSocket socket_;
    WebSocketSender sender_{socket_};
    const EngineTimings timings_;
    QNetworkRequest request_;
    NetworkPreparation preparation_;
    HostLookups lookups_;
    QObject context_;
    QTimer limit_; ///< For whatever the service is to do next.
    QTimer pingTimer_;
    int pingsUnanswered_ = 0;   ///< Since anything was heard of the service.
    bool answersPings_ = false; ///< It has answered one.
    std::deque<Outgoing> waitingForConnection_;
    std::vector<Completion<QString>> waitingForNetwork_;
    std::vector<Completion<QString>> sent_;
    std::deque<Message> unread_;
    std::optional<Completion<Message>> reader_;
    std::optional<Message> failure_;
    QString tlsErrors_;
    bool connected_ = false;
    bool hurrying_ = false;
    bool closing_ = false;
    bool givingUp_ = false; ///< The reader that waits now is to get a failure.
    bool delivering_ = false;
};

} // namespace orv
