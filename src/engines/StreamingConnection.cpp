#include "StreamingConnection.h"

#include "ConnectionWatch.h"
#include "Post.h"
#include "ServiceRequests.h"
#include "WebSocketFailure.h"

#include <QSslError>
#include <QSslSocket>

#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void StreamingSocket::Connection::open(const QNetworkRequest& request) {
    request_ = request;
    limit_.setSingleShot(true);
    connectSignals();
    if (!request.url().isValid()) {
        fail(u"Ungültige Anfrage"_s);
        return;
    }
    limit_.start(timings_.streamRequest);
    if (request.url().scheme() == u"ws" || NetworkPreparation::isDone()) {
        connectToService();
    } else {
        preparation_.start();
    }
}

void StreamingSocket::Connection::connectToService() {
    if (isOver()) {
        return;
    }
    // The socket looks the name up by itself, but on threads that the end of the program waits for:
    // it is not to ask a name server that is silent.
    lookups_.resolve(request_.url().host(), [this](const HostAnswer& answer) {
        if (isOver()) {
            return;
        }
        if (answer.addresses.isEmpty()) {
            fail(answer.error);
        } else {
            socket_.open(request_);
        }
    });
}

void StreamingSocket::Connection::connectSignals() {
    QObject::connect(&preparation_, &NetworkPreparation::ready, &context_,
                     [this] { connectToService(); });
    QObject::connect(&limit_, &QTimer::timeout, &limit_,
                     [this] { fail(u"Zeitüberschreitung"_s, ServiceFault::Kind::TimedOut); });
    QObject::connect(&socket_, &QWebSocket::connected, &context_, [this] { onConnected(); });
    QObject::connect(&pingTimer_, &QTimer::timeout, &pingTimer_, [this] { ping(); });
    QObject::connect(&socket_, &QWebSocket::pong, &context_, [this] {
        answersPings_ = true;
        pingsUnanswered_ = 0;
    });
    QObject::connect(&socket_, &QWebSocket::textMessageReceived, &context_,
                     [this](const QString& text) {
                         take({Message::Kind::Text, text});
                     });
    QObject::connect(&socket_, &QWebSocket::binaryMessageReceived, &context_, [this] {
        take({Message::Kind::Binary, {}});
    });
    QObject::connect(&socket_, &QWebSocket::sslErrors, &context_,
                     [this](const QList<QSslError>& errors) {
                         for (const QSslError& error : errors) {
                             tlsErrors_ += u" "_s + error.errorString() + u"."_s;
                         }
                     });
    QObject::connect(&socket_, webSocketFailure<QWebSocket>(), &context_,
                     [this] { fail(socket_.errorString() + tlsErrors_); });
    QObject::connect(&socket_, &QWebSocket::disconnected, &context_, [this] {
        const int code = static_cast<int>(socket_.closeCode());
        fail({.kind = Message::Kind::Failure,
              .text = u"Vom Dienst beendet (Code %1) %2"_s.arg(code)
                          .arg(socket_.closeReason())
                          .trimmed(),
              .closeCode = code,
              .closeReason = socket_.closeReason()});
    });
}

void StreamingSocket::Connection::release() {
    socket_.disconnect(&context_);
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

Completion<QString> StreamingSocket::Connection::sendFrame(WebSocketFrameKind kind,
                                                           const QByteArray& payload) {
    Completion<QString> sent;
    if (isOver()) {
        sent.complete(failure_->text);
    } else if (!connected_) {
        waitingForConnection_.push_back({kind, payload, sent});
    } else {
        waitingForNetwork_.push_back(sent);
        sender_.send(kind, payload);
        socket_.flush();
        settle();
    }
    return sent;
}

void StreamingSocket::Connection::onConnected() {
    connected_ = true;
    for (Outgoing& outgoing : std::exchange(waitingForConnection_, {})) {
        waitingForNetwork_.push_back(outgoing.sent);
        sender_.send(outgoing.kind, outgoing.payload);
    }
    watchTransport();
    socket_.flush();
    onBytesTaken();
}

void StreamingSocket::Connection::watchTransport() {
    pingTimer_.start(timings_.ping);
    QTcpSocket* const transport = sender_.transport();
    if (transport == nullptr) {
        return; // Another toolkit than those known: a service that is gone is missed by its pings.
    }
    limitSendBuffer(*transport);
    // What has not left is missed here first, and said in the same words wherever it stands.
    endConnectionWhenUnheard(*transport, timings_.streamStall + std::chrono::seconds(1));
    // What was encrypted is not yet what has left.
    if (auto* const secure = qobject_cast<QSslSocket*>(transport)) {
        QObject::connect(secure, &QSslSocket::encryptedBytesWritten, &context_,
                         [this] { onBytesTaken(); });
    } else {
        QObject::connect(transport, &QTcpSocket::bytesWritten, &context_,
                         [this] { onBytesTaken(); });
    }
}

/// The service gets the whole time again for the rest.
void StreamingSocket::Connection::onBytesTaken() {
    if (!hurrying_) {
        limit_.stop();
    }
    settle();
}

/// By number, not by the clock: an answer that is only not read yet is none that is missing.
void StreamingSocket::Connection::ping() {
    if (answersPings_ && pingsUnanswered_ * timings_.ping >= timings_.streamStall) {
        fail(u"Zeitüberschreitung"_s, ServiceFault::Kind::TimedOut);
    } else {
        ++pingsUnanswered_;
        socket_.ping();
    }
}

void StreamingSocket::Connection::settle() {
    if (isOver()) {
        return;
    }
    const QTcpSocket* const transport = sender_.transport();
    if (transport != nullptr && bytesNotTaken(*transport) > 0) {
        if (!limit_.isActive()) {
            limit_.start(timings_.streamStall);
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
    pingsUnanswered_ = 0;
    unread_.push_back(std::move(message));
    deliverLater();
}

void StreamingSocket::Connection::fail(const QString& reason, ServiceFault::Kind kind) {
    fail({.kind = Message::Kind::Failure, .text = reason, .fault = kind});
}

void StreamingSocket::Connection::fail(Message failure) {
    if (isOver()) {
        return;
    }
    failure.text = withoutQuery(failure.text, request_.url());
    failure_ = std::move(failure);
    limit_.stop();
    pingTimer_.stop();
    deliverLater();
}

void StreamingSocket::Connection::hurry() {
    if (!isOver() && !hurrying_) {
        hurrying_ = true;
        limit_.start(timings_.streamFarewell);
    }
}

void StreamingSocket::Connection::awaitEnd() {
    if (!isOver()) {
        hurrying_ = true;
        limit_.start(timings_.lastResults);
    }
}

void StreamingSocket::Connection::close() {
    if (isOver()) {
        return;
    }
    fail(u"Verbindung geschlossen"_s);
    if (connected_) {
        closing_ = true;
        socket_.close(QWebSocketProtocol::CloseCodeGoingAway);
    } else {
        socket_.abort();
    }
}

void StreamingSocket::Connection::deliverLater() {
    if (!std::exchange(delivering_, true)) {
        // Not as an owner: an event whose turn never comes, at the program's end, is destroyed
        // where no object of Qt can be.
        post(&context_, [connection = weak_from_this()] {
            if (const auto self = connection.lock()) {
                self->delivering_ = false;
                self->deliver();
            }
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
        answerReader(*failure_);
    } else if (reader_ && givingUp_) {
        answerReader({.kind = Message::Kind::Failure,
                      .text = u"Zeitüberschreitung"_s,
                      .fault = ServiceFault::Kind::TimedOut});
    }
    if (isOver() && !closing_) {
        socket_.abort();
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
    const QString reason = failure_->text;
    for (const auto& outgoing : std::exchange(waitingForConnection_, {})) {
        outgoing.sent.complete(reason);
    }
    for (const auto& sent : std::exchange(waitingForNetwork_, {})) {
        sent.complete(reason);
    }
}

} // namespace orv
