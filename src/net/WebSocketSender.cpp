#include "WebSocketSender.h"

namespace orv {

WebSocketSender::WebSocketSender(QWebSocket& socket)
    : socket_(socket) {
    socket_.setMaxAllowedIncomingFrameSize(maximumMessageSize);
    socket_.setMaxAllowedIncomingMessageSize(maximumMessageSize);
    socket_.setOutgoingFrameSize(maximumMessageSize);
}

void WebSocketSender::send(WebSocketFrameKind kind, const QByteArray& payload) {
    QTcpSocket* below = transport();
    if (below != nullptr && static_cast<quint64>(payload.size()) <= maximumMessageSize) {
        below->write(maskedFrame(kind, payload, maskingKeys_.generate()));
    } else if (kind == WebSocketFrameKind::Text) {
        socket_.sendTextMessage(QString::fromUtf8(payload));
    } else {
        socket_.sendBinaryMessage(payload);
    }
}

QTcpSocket* WebSocketSender::transport() {
    if (!transport_) {
        transport_ = socket_.findChild<QTcpSocket*>({}, Qt::FindDirectChildrenOnly);
    }
    return transport_;
}

} // namespace orv
