#include "BackendSocket.h"

#include "EventLoopThread.h"
#include "ThreadChecks.h"
#include "WebSocketFailure.h"

#include <QNetworkProxy>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// No sound fits into less: the smallest chunk is more.
constexpr qsizetype shortMessage = 32768;

void tell(const BackendLink::Sent& sent, const QString& error) {
    if (sent) {
        sent(error);
    }
}

} // namespace

BackendSocket::BackendSocket(EventLoopThread& thread, const QUrl& url,
                             BackendMessageHandler messages, BackendLink::Timings timings)
    : QObject(thread.context())
    , thread_(thread)
    , messages_(std::move(messages))
    , timings_(timings) {
    ORV_ON(thread_);
    webSocketTask_.setProxy(QNetworkProxy::NoProxy);
    timer_.setSingleShot(true);

    connect(&webSocketTask_, &QWebSocket::connected, this, &BackendSocket::onConnected);
    connect(&webSocketTask_, &QWebSocket::disconnected, this, &BackendSocket::onDisconnected);
    connect(&webSocketTask_, &QWebSocket::bytesWritten, this, &BackendSocket::onBytesWritten);
    connect(&webSocketTask_, webSocketFailure<QWebSocket>(), this,
            [this] { fail(webSocketTask_.errorString()); });
    connect(&webSocketTask_, &QWebSocket::textMessageReceived, this,
            [this](const QString& text) { receiveMessage(text.toUtf8()); });
    // A data frame is parsed as it is: what is not UTF-8 is not JSON either.
    connect(&webSocketTask_, &QWebSocket::binaryMessageReceived, this,
            &BackendSocket::receiveMessage);
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (closing_) {
            deleteLater();
        } else {
            fail(u"Zeitüberschreitung beim Verbinden"_s);
        }
    });

    timer_.start(timings_.handshake);
    webSocketTask_.open(url);
}

BackendSocket::~BackendSocket() {
    ORV_ON(thread_);
    webSocketTask_.disconnect(this);
    webSocketTask_.abort();
    failPending(u"Verbindung abgebrochen"_s);
}

void BackendSocket::receiveMessage(const QByteArray& utf8) {
    ORV_ON(thread_);
    messages_.handleTranslation(utf8);
}

void BackendSocket::send(QByteArray message, BackendLink::Sent sent) {
    ORV_ON(thread_);
    if (!failure_.isEmpty() || closing_) {
        tell(sent, failure_.isEmpty() ? u"Verbindung geschlossen"_s : failure_);
        return;
    }
    if (static_cast<std::uint64_t>(message.size()) > maximumMessageSize) {
        tell(sent, u"Nachricht zu groß"_s);
        return;
    }
    if (!hasRoomFor(message)) {
        tell(sent, u"Der Server nimmt nichts mehr an, %1 MB warten"_s.arg(
                       BackendLink::mostWaiting >> 20));
        return;
    }
    if (!connected_) {
        bytesForConnection_ += message.size();
        waitingForConnection_.emplace_back(std::move(message), std::move(sent));
        return;
    }
    waitingForNetwork_.push_back(std::move(sent));
    sender_.send(WebSocketFrameKind::Text, message);
}

bool BackendSocket::hasRoomFor(const QByteArray& message) const {
    return message.size() <= shortMessage ||
           bytesForConnection_ + webSocketTask_.bytesToWrite() + message.size() <=
               BackendLink::mostWaiting;
}

void BackendSocket::close() {
    ORV_ON(thread_);
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
        webSocketTask_.close(QWebSocketProtocol::CloseCodeGoingAway);
    }
}

void BackendSocket::onConnected() {
    ORV_ON(thread_);
    connected_ = true;
    bytesForConnection_ = 0;
    for (auto& [message, sent] : std::exchange(waitingForConnection_, {})) {
        waitingForNetwork_.push_back(std::move(sent));
        sender_.send(WebSocketFrameKind::Text, message);
    }
    if (closing_) {
        webSocketTask_.close(QWebSocketProtocol::CloseCodeGoingAway);
    } else {
        timer_.stop();
    }
}

void BackendSocket::onBytesWritten() {
    ORV_ON(thread_);
    if (webSocketTask_.bytesToWrite() > 0) {
        return;
    }
    for (const BackendLink::Sent& sent : std::exchange(waitingForNetwork_, {})) {
        tell(sent, {});
    }
}

void BackendSocket::onDisconnected() {
    ORV_ON(thread_);
    if (closing_) {
        failPending(u"Verbindung geschlossen"_s);
        deleteLater();
        return;
    }
    QString error = u"Verbindung von der Gegenseite beendet (Code %1)"_s.arg(
        static_cast<int>(webSocketTask_.closeCode()));
    if (!webSocketTask_.closeReason().isEmpty()) {
        error += u": "_s + webSocketTask_.closeReason();
    }
    fail(error);
}

void BackendSocket::fail(const QString& error) {
    ORV_ON(thread_);
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
        this, [this] { webSocketTask_.abort(); }, Qt::QueuedConnection);
    messages_.handleFailure(failure_);
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
