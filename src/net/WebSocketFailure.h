#pragma once

#include <QAbstractSocket>

namespace orv {

/// The signal by which a QWebSocket tells that it failed. Qt 6.5 gave it another name; the name
/// there is at hand counts, so that nobody else need know of either.
template <typename WebSocket>
constexpr auto webSocketFailure() {
    if constexpr (requires { &WebSocket::errorOccurred; }) {
        return &WebSocket::errorOccurred;
    } else {
        return qOverload<QAbstractSocket::SocketError>(&WebSocket::error);
    }
}

} // namespace orv
