#include "StreamingSocket.h"

#include "StreamingConnection.h"

namespace orv {

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
    return connection_->sendFrame(WebSocketFrameKind::Text, text.toUtf8());
}

Completion<QString> StreamingSocket::sendSound(WebSocketFrameKind kind, const QByteArray& payload) {
    return connection_->sendFrame(kind, payload);
}

bool StreamingSocket::wasAccepted() const {
    return connection_->wasAccepted();
}

bool StreamingSocket::isOpen() const {
    return connection_->isOpen();
}

void StreamingSocket::awaitEnd() {
    connection_->awaitEnd();
}

void StreamingSocket::hurry() {
    connection_->hurry();
}

void StreamingSocket::close() {
    connection_->close();
}

} // namespace orv
