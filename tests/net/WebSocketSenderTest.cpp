// Messages over a connection to a server of the toolkit's own on loopback.

#include "WebSocketSender.h"

#include "WaitUntil.h"

#include <QWebSocketServer>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using test::waitUntil;

class WebSocketSenderTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(server_.listen(QHostAddress::LocalHost));
        QObject::connect(&server_, &QWebSocketServer::newConnection, &server_, [this] {
            peer_.reset(server_.nextPendingConnection());
            QObject::connect(peer_.get(), &QWebSocket::textMessageReceived, peer_.get(),
                             [this](const QString& text) { received.append(u"text "_s + text); });
            QObject::connect(peer_.get(), &QWebSocket::binaryMessageReceived, peer_.get(),
                             [this](const QByteArray& bytes) {
                                 received.append(u"bytes "_s + QString::fromLatin1(bytes.toHex()));
                             });
        });
        socket.open(server_.serverUrl());
        ASSERT_TRUE(
            waitUntil([this] { return socket.state() == QAbstractSocket::ConnectedState; }));
    }

    QWebSocket socket;
    QStringList received;

  private:
    QWebSocketServer server_{u"test"_s, QWebSocketServer::NonSecureMode};
    std::unique_ptr<QWebSocket> peer_;
};

TEST_F(WebSocketSenderTest, sendsTextAndBytesInOrderAmongTheSocketsOwn) {
    WebSocketSender sender(socket);
    sender.send(WebSocketFrameKind::Text, "gr\xC3\xBC\xC3\x9F");
    socket.sendTextMessage(u"own"_s);
    sender.send(WebSocketFrameKind::Binary, QByteArray("\x00\xff", 2));
    socket.sendBinaryMessage("a");
    sender.send(WebSocketFrameKind::Text, {});
    ASSERT_TRUE(waitUntil([this] { return received.size() == 5; }));
    EXPECT_EQ(received, (QStringList{u"text grüß"_s, u"text own"_s, u"bytes 00ff"_s, u"bytes 61"_s,
                                     u"text "_s}));
}

TEST_F(WebSocketSenderTest, sendsAMessageOfEightSecondsWhole) {
    WebSocketSender sender(socket);
    const QByteArray message(1'024'000, 'x');
    sender.send(WebSocketFrameKind::Text, message);
    ASSERT_TRUE(waitUntil([this] { return received.size() == 1; }));
    EXPECT_EQ(received[0], u"text "_s + QString::fromLatin1(message));
}

} // namespace
} // namespace orv
