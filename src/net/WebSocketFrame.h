#pragma once

#include <QByteArray>

#include <cstdint>

namespace orv {

/// What a WebSocket message holds; the values are the opcodes of RFC 6455.
enum class WebSocketFrameKind : std::uint8_t {
    Text = 0x1, ///< UTF-8.
    Binary = 0x2,
};

/// A whole message as the one frame in which a client sends it: final, and masked with `key`, which
/// must not be foreseeable (RFC 6455, sections 5.2 and 5.3).
QByteArray maskedFrame(WebSocketFrameKind kind, const QByteArray& payload, std::uint32_t key);

} // namespace orv
