#include "BackendSocket.h"

#include "WebSocketFailure.h"

#include <QNetworkProxy>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

void tell(const BackendLink::Sent& sent, const QString& error) {
    if (sent) {
        sent(error);
    }
}

} // namespace

BackendSocket::BackendSocket(const QUrl& url, Events events, BackendLink::Timings timings,
                             QObject* parent)
    : QObject(parent)
    , events_(std::move(events))
    , timings_(timings) {
    socket_.setProxy(QNetworkProxy::NoProxy);
    timer_.setSingleShot(true);

    connect(&socket_, &QWebSocket::connected, this, &BackendSocket::onConnected);
    connect(&socket_, &QWebSocket::disconnected, this, &BackendSocket::onDisconnected);
    connect(&socket_, &QWebSocket::bytesWritten, this, &BackendSocket::onBytesWritten);
    connect(&socket_, webSocketFailure<QWebSocket>(), this,
            [this] { fail(socket_.errorString()); });
    connect(&socket_, &QWebSocket::textMessageReceived, this,
            [this](const QString& text) { events_.message(parseDownstream(text.toUtf8())); });
    // A data frame is parsed as it is: what is not UTF-8 is not JSON either.
    connect(&socket_, &QWebSocket::binaryMessageReceived, this,
            [this](const QByteArray& bytes) { events_.message(parseDownstream(bytes)); });
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (closing_) {
            deleteLater();
        } else {
            fail(u"Zeitüberschreitung beim Verbinden"_s);
        }
    });

    timer_.start(timings_.handshake);
    socket_.open(url);
}

BackendSocket::~BackendSocket() {
    socket_.disconnect(this);
    socket_.abort();
    failPending(u"Verbindung abgebrochen"_s);
}

void BackendSocket::send(QByteArray message, BackendLink::Sent sent) {
    if (!failure_.isEmpty() || closing_) {
        tell(sent, failure_.isEmpty() ? u"Verbindung geschlossen"_s : failure_);
        return;
    }
    if (static_cast<std::uint64_t>(message.size()) > maximumMessageSize) {
        tell(sent, u"Nachricht zu groß"_s);
        return;
    }
    if (!connected_) {
        waitingForConnection_.emplace_back(std::move(message), std::move(sent));
        return;
    }
    waitingForNetwork_.push_back(std::move(sent));
    sender_.send(WebSocketFrameKind::Text, message);
}

void BackendSocket::close() {
    if (closing_) {
        return;
    }
    closing_ = true;
    if (!failure_.isEmpty()) {
        deleteLater();
        return;
    }
    timer_.start(timings_.closing);
    if (connected_) {
        socket_.close(QWebSocketProtocol::CloseCodeGoingAway);
    }
}

void BackendSocket::onConnected() {
    connected_ = true;
    for (auto& [message, sent] : std::exchange(waitingForConnection_, {})) {
        waitingForNetwork_.push_back(std::move(sent));
        sender_.send(WebSocketFrameKind::Text, message);
    }
    if (closing_) {
        socket_.close(QWebSocketProtocol::CloseCodeGoingAway);
    } else {
        timer_.stop();
    }
}

void BackendSocket::onBytesWritten() {
    if (socket_.bytesToWrite() > 0) {
        return;
    }
    for (const BackendLink::Sent& sent : std::exchange(waitingForNetwork_, {})) {
        tell(sent, {});
    }
}

void BackendSocket::onDisconnected() {
    if (closing_) {
        failPending(u"Verbindung geschlossen"_s);
        deleteLater();
        return;
    }
    QString error = u"Verbindung von der Gegenseite beendet (Code %1)"_s.arg(
        static_cast<int>(socket_.closeCode()));
    if (!socket_.closeReason().isEmpty()) {
        error += u": "_s + socket_.closeReason();
    }
    fail(error);
}

void BackendSocket::fail(const QString& error) {
    if (closing_) {
        deleteLater();
    }
    if (!failure_.isEmpty() || closing_) {
        return;
    }
    failure_ = error.isEmpty() ? u"Unbekannter Fehler"_s : error;
    timer_.stop();
    failPending(failure_);
    // Not from inside the socket's own signal.
    QMetaObject::invokeMethod(
        this, [this] { socket_.abort(); }, Qt::QueuedConnection);
    events_.failed(failure_);
}

void BackendSocket::failPending(const QString& error) {
    for (const auto& [message, sent] : std::exchange(waitingForConnection_, {})) {
        tell(sent, error);
    }
    for (const BackendLink::Sent& sent : std::exchange(waitingForNetwork_, {})) {
        tell(sent, error);
    }
}

} // namespace orv
