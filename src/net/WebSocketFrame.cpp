#include "WebSocketFrame.h"

#include <QtEndian>

#include <cstring>

namespace orv {

namespace {

constexpr std::uint8_t finalFrame = 0x80;
constexpr std::uint8_t masked = 0x80;
constexpr qsizetype longestShortPayload = 125;
constexpr qsizetype keySize = 4;

/// How many bytes follow the first two to tell a payload's size.
qsizetype sizeBytes(qsizetype payloadSize) {
    if (payloadSize <= longestShortPayload) {
        return 0;
    }
    return payloadSize <= 0xFFFF ? 2 : 8;
}

/// Copies while masking, eight bytes at a time. `key` lies in memory as it goes over the network.
void copyMasked(char* to, const char* from, std::size_t size, std::uint32_t key) {
    const std::uint64_t wideKey = std::uint64_t{key} << 32U | key;
    std::size_t done = 0;
    for (; done + sizeof wideKey <= size; done += sizeof wideKey) {
        std::uint64_t block = 0;
        std::memcpy(&block, from + done, sizeof block);
        block ^= wideKey;
        std::memcpy(to + done, &block, sizeof block);
    }
    std::uint64_t rest = 0;
    std::memcpy(&rest, from + done, size - done);
    rest ^= wideKey;
    std::memcpy(to + done, &rest, size - done);
}

} // namespace

QByteArray maskedFrame(WebSocketFrameKind kind, const QByteArray& payload, std::uint32_t key) {
    const qsizetype size = payload.size();
    const qsizetype lengthBytes = sizeBytes(size);
    QByteArray frame(2 + lengthBytes + keySize + size, Qt::Uninitialized);
    char* next = frame.data();
    *next++ = static_cast<char>(finalFrame | static_cast<std::uint8_t>(kind));
    if (lengthBytes == 0) {
        *next++ = static_cast<char>(masked | static_cast<std::uint8_t>(size));
    } else if (lengthBytes == 2) {
        *next++ = static_cast<char>(masked | 126U);
        qToBigEndian(static_cast<quint16>(size), next);
    } else {
        *next++ = static_cast<char>(masked | 127U);
        qToBigEndian(static_cast<quint64>(size), next);
    }
    next += lengthBytes;
    std::memcpy(next, &key, keySize);
    next += keySize;
    copyMasked(next, payload.constData(), static_cast<std::size_t>(size), key);
    return frame;
}

} // namespace orv
