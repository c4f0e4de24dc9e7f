#include "StreamingSocket.h"

#include "Post.h"
#include "ServiceRequests.h"

#include <QSslError>
#include <QTimer>
#include <QWebSocket>

#include <deque>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

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
    Completion<QString> send(std::function<void()> write);
    void hurry();
    void close();

    QWebSocket socket;

  private:
    struct Outgoing {
        std::function<void()> write;
        Completion<QString> sent;
    };

    void connectSignals();
    void onConnected();
    void onBytesWritten();
    void settle();
    void take(Message message);
    void fail(const QString& reason);
    void deliverLater();
    void deliver();
    void answerReader(Message message);
    void completeSends();
    void failSends();

    bool isOver() const { return failure_.has_value(); }

    const EngineTimings timings_;
    QNetworkRequest request_;
    QObject context_;
    QTimer limit_; ///< For whatever the service is to do next.
    std::deque<Outgoing> waitingForConnection_;
    std::vector<Completion<QString>> waitingForNetwork_;
    std::vector<Completion<QString>> sent_;
    std::deque<Message> unread_;
    std::optional<Completion<Message>> reader_;
    std::optional<QString> failure_;
    QString tlsErrors_;
    bool connected_ = false;
    bool hurrying_ = false;
    bool closing_ = false;
    bool givingUp_ = false; ///< The reader that waits now is to get a failure.
    bool delivering_ = false;
};

void StreamingSocket::Connection::open(const QNetworkRequest& request) {
    request_ = request;
    socket.setMaxAllowedIncomingFrameSize(maximumStreamMessage);
    socket.setMaxAllowedIncomingMessageSize(maximumStreamMessage);
    socket.setOutgoingFrameSize(maximumStreamMessage);
    limit_.setSingleShot(true);
    connectSignals();
    if (!request.url().isValid()) {
        fail(u"Ungültige Anfrage"_s);
        return;
    }
    limit_.start(timings_.streamRequest);
    socket.open(request);
}

void StreamingSocket::Connection::connectSignals() {
    QObject::connect(&limit_, &QTimer::timeout, &limit_, [this] { fail(u"Zeitüberschreitung"_s); });
    QObject::connect(&socket, &QWebSocket::connected, &context_, [this] { onConnected(); });
    QObject::connect(&socket, &QWebSocket::bytesWritten, &context_, [this] { onBytesWritten(); });
    QObject::connect(&socket, &QWebSocket::textMessageReceived, &context_,
                     [this](const QString& text) {
                         take({Message::Kind::Text, text});
                     });
    QObject::connect(&socket, &QWebSocket::binaryMessageReceived, &context_, [this] {
        take({Message::Kind::Binary, {}});
    });
    QObject::connect(&socket, &QWebSocket::sslErrors, &context_,
                     [this](const QList<QSslError>& errors) {
                         for (const QSslError& error : errors) {
                             tlsErrors_ += u" "_s + error.errorString() + u"."_s;
                         }
                     });
    QObject::connect(&socket, qOverload<QAbstractSocket::SocketError>(&QWebSocket::error),
                     &context_, [this] { fail(socket.errorString() + tlsErrors_); });
    QObject::connect(&socket, &QWebSocket::disconnected, &context_, [this] {
        fail(u"Vom Dienst beendet (Code %1) %2"_s.arg(static_cast<int>(socket.closeCode()))
                 .arg(socket.closeReason())
                 .trimmed());
    });
}

void StreamingSocket::Connection::release() {
    socket.disconnect(&context_);
    limit_.stop();
    fail(u"Verbindung abgebrochen"_s);
    unread_.clear();
    deliver();
}

Completion<StreamingSocket::Message> StreamingSocket::Connection::receive() {
    reader_.emplace();
    if (!unread_.empty() || isOver()) {
        deliverLater();
    }
    return *reader_;
}

void StreamingSocket::Connection::stopReceiving() {
    givingUp_ = true;
    deliverLater();
}

Completion<QString> StreamingSocket::Connection::send(std::function<void()> write) {
    Completion<QString> sent;
    if (isOver()) {
        sent.complete(*failure_);
    } else if (!connected_) {
        waitingForConnection_.push_back({std::move(write), sent});
    } else {
        waitingForNetwork_.push_back(sent);
        write();
        socket.flush();
        settle();
    }
    return sent;
}

void StreamingSocket::Connection::onConnected() {
    connected_ = true;
    for (Outgoing& outgoing : std::exchange(waitingForConnection_, {})) {
        waitingForNetwork_.push_back(std::move(outgoing.sent));
        outgoing.write();
    }
    socket.flush();
    onBytesWritten();
}

/// The service has taken something: it gets the whole time again for the rest.
void StreamingSocket::Connection::onBytesWritten() {
    if (connected_) {
        if (!hurrying_) {
            limit_.stop();
        }
        settle();
    }
}

void StreamingSocket::Connection::settle() {
    if (isOver()) {
        return;
    }
    if (socket.bytesToWrite() > 0) {
        if (!limit_.isActive()) {
            limit_.start(timings_.streamRequest);
        }
        return;
    }
    if (!waitingForNetwork_.empty()) {
        std::move(waitingForNetwork_.begin(), waitingForNetwork_.end(), std::back_inserter(sent_));
        waitingForNetwork_.clear();
        deliverLater();
    }
}

void StreamingSocket::Connection::take(Message message) {
    unread_.push_back(std::move(message));
    deliverLater();
}

void StreamingSocket::Connection::fail(const QString& reason) {
    if (isOver()) {
        return;
    }
    failure_ = withoutQuery(reason, request_.url());
    limit_.stop();
    deliverLater();
}

void StreamingSocket::Connection::hurry() {
    if (!isOver() && !hurrying_) {
        hurrying_ = true;
        limit_.start(timings_.streamFarewell);
    }
}

void StreamingSocket::Connection::close() {
    if (isOver()) {
        return;
    }
    fail(u"Verbindung geschlossen"_s);
    if (connected_) {
        closing_ = true;
        socket.close(QWebSocketProtocol::CloseCodeGoingAway);
    } else {
        socket.abort();
    }
}

void StreamingSocket::Connection::deliverLater() {
    if (!std::exchange(delivering_, true)) {
        post(&context_, [self = shared_from_this()] {
            self->delivering_ = false;
            self->deliver();
        });
    }
}

void StreamingSocket::Connection::deliver() {
    completeSends();
    failSends();
    while (reader_ && !unread_.empty()) {
        Message message = std::move(unread_.front());
        unread_.pop_front();
        answerReader(std::move(message));
    }
    if (reader_ && isOver()) {
        answerReader({Message::Kind::Failure, *failure_});
    } else if (reader_ && givingUp_) {
        answerReader({Message::Kind::Failure, u"Zeitüberschreitung"_s});
    }
    if (isOver() && !closing_) {
        socket.abort();
    }
}

void StreamingSocket::Connection::answerReader(Message message) {
    givingUp_ = false;
    const auto reader = std::exchange(reader_, {});
    reader->complete(std::move(message));
}

void StreamingSocket::Connection::completeSends() {
    for (const auto& sent : std::exchange(sent_, {})) {
        sent.complete({});
    }
}

void StreamingSocket::Connection::failSends() {
    if (!isOver()) {
        return;
    }
    const QString reason = *failure_;
    for (const auto& outgoing : std::exchange(waitingForConnection_, {})) {
        outgoing.sent.complete(reason);
    }
    for (const auto& sent : std::exchange(waitingForNetwork_, {})) {
        sent.complete(reason);
    }
}

StreamingSocket::StreamingSocket(const QNetworkRequest& request, EngineTimings timings)
    : connection_(std::make_shared<Connection>(timings)) {
    connection_->open(request);
}

StreamingSocket::~StreamingSocket() {
    const auto connection = connection_;
    connection->release();
}

Completion<StreamingSocket::Message> StreamingSocket::receive() {
    return connection_->receive();
}

void StreamingSocket::stopReceiving() {
    connection_->stopReceiving();
}

Completion<QString> StreamingSocket::sendText(const QString& text) {
    return connection_->send(
        [socket = &connection_->socket, text] { socket->sendTextMessage(text); });
}

Completion<QString> StreamingSocket::sendBinary(const QByteArray& bytes) {
    return connection_->send(
        [socket = &connection_->socket, bytes] { socket->sendBinaryMessage(bytes); });
}

void StreamingSocket::hurry() {
    connection_->hurry();
}

void StreamingSocket::close() {
    connection_->close();
}

} // namespace orv
