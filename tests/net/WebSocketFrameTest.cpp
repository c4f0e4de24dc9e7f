#include "WebSocketFrame.h"

#include <gtest/gtest.h>

#include <cstring>

namespace orv {
namespace {

std::uint32_t keyOf(const char* bytes) {
    std::uint32_t key = 0;
    std::memcpy(&key, bytes, sizeof key);
    return key;
}

/// What a server makes of the masked part of a frame.
QByteArray unmasked(const QByteArray& content, const char* key) {
    QByteArray plain;
    for (qsizetype i = 0; i < content.size(); ++i) {
        plain.append(static_cast<char>(content[i] ^ key[i % 4]));
    }
    return plain;
}

QByteArray payloadOf(qsizetype size) {
    QByteArray payload;
    for (qsizetype i = 0; i < size; ++i) {
        payload.append(static_cast<char>(i * 7));
    }
    return payload;
}

TEST(WebSocketFrame, isTheOneThatTheStandardShows) {
    EXPECT_EQ(maskedFrame(WebSocketFrameKind::Text, "Hello", keyOf("\x37\xfa\x21\x3d")).toHex(),
              "818537fa213d7f9f4d5158");
}

TEST(WebSocketFrame, tellsBinaryFromText) {
    EXPECT_EQ(maskedFrame(WebSocketFrameKind::Binary, {}, 0).toHex(), "828000000000");
}

TEST(WebSocketFrame, tellsItsSizeInTheShortestForm) {
    const auto head = [](qsizetype size) {
        return maskedFrame(WebSocketFrameKind::Binary, QByteArray(size, 'x'), 0).left(10).toHex();
    };
    EXPECT_EQ(head(125).left(4), "82fd");
    EXPECT_EQ(head(126).left(8), "82fe007e");
    EXPECT_EQ(head(65535).left(8), "82feffff");
    EXPECT_EQ(head(65536), "82ff0000000000010000");
}

TEST(WebSocketFrame, masksEveryByteWhateverTheSize) {
    const char* key = "\x01\x80\x7f\xfe";
    for (const qsizetype size : {0, 1, 7, 8, 9, 15, 16, 17, 125, 126, 8192, 65537}) {
        const QByteArray payload = payloadOf(size);
        const QByteArray frame = maskedFrame(WebSocketFrameKind::Binary, payload, keyOf(key));
        EXPECT_EQ(unmasked(frame.last(size), key), payload) << size;
        EXPECT_EQ(frame.mid(frame.size() - size - 4, 4), QByteArray(key, 4)) << size;
    }
}

} // namespace
} // namespace orv
