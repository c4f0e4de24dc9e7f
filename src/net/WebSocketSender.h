#pragma once

#include "WebSocketFrame.h"

#include <QByteArray>
#include <QPointer>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QWebSocket>

#include <cstdint>

namespace orv {

/// The largest message in either direction, bytes.
inline constexpr std::uint64_t maximumMessageSize = 16'777'216;

/// Sends messages over a QWebSocket as the bytes they are, each as one frame. The socket itself
/// takes text as UTF-16 only, masks byte by byte and hands header and content to the network apart;
/// what going round that buys is measured by bench/net. It writes its own frames whole, so ours can
/// go between them to the socket below. Lives on the thread of its socket, which outlives it.
class WebSocketSender {
  public:
    /// Limits the messages of `socket`, both ways, to `maximumMessageSize`.
    explicit WebSocketSender(QWebSocket& socket);

    /// To be called while the socket is connected. Text is UTF-8.
    void send(WebSocketFrameKind kind, const QByteArray& payload);

    /// The socket below, encrypted or not; null while not connected.
    QTcpSocket* transport();

  private:
    QWebSocket& socket_;
    QPointer<QTcpSocket> transport_; ///< Below the WebSocket, whose child it is; once connected.
    /// As hard to foresee as the system's own numbers, without the time that each of those takes.
    QRandomGenerator maskingKeys_ = QRandomGenerator::securelySeeded();
};

} // namespace orv
