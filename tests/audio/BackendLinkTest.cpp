#include "BackendLink.h"

#include "EventLoopThread.h"
#include "Ports.h"
#include "WaitUntil.h"
#include "WebSocketPeer.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::waitUntil;

class BackendLinkTest : public testing::Test, public BackendLink::Listener {
  protected:
    void open(quint16 port, BackendLink::Timings timings = {}) {
        const QUrl url(u"ws://127.0.0.1:%1"_s.arg(port));
        link = std::make_unique<BackendLink>(thread, url, *this, timings);
    }

    void receiveResult(const Result& result) override { received.append(result); }

    void receiveStatus(const StatusMessage& status) override { received.append(status); }

    void receiveProcessed() override { received.append(ProcessedMessage{}); }

    void receiveFlushed() override {
        received.append(FlushedMessage{});
        if (endsLinkWhenFlushed) {
            link.reset();
        }
    }

    void linkFailed(const QString& error) override { failures.append(error); }

    /// Remembers the outcome of a send.
    BackendLink::Sent remember() {
        return [this](const QString& error) {
            const std::lock_guard lock(mutex);
            outcomes.append(error);
        };
    }

    QStringList sent() {
        const std::lock_guard lock(mutex);
        return outcomes;
    }

    bool endsLinkWhenFlushed = false;
    QList<DownstreamMessage> received;
    QStringList failures;
    std::mutex mutex;
    QStringList outcomes;
    // After what it writes to.
    EventLoopThread thread{u"test.link"_s};
    std::unique_ptr<BackendLink> link;
};

TEST_F(BackendLinkTest, sendsWhatWasAskedForBeforeTheConnectionStood) {
    test::WebSocketPeer peer;
    open(peer.port());
    EXPECT_TRUE(link->sender().send(R"({"type":"a"})", remember()));
    EXPECT_TRUE(link->sender().send(R"({"type":"b"})", remember()));
    ASSERT_TRUE(waitUntil([&] { return peer.messages().size() == 2 && sent().size() == 2; }));
    EXPECT_EQ(peer.messages()[0][u"type"_s], u"a"_s);
    EXPECT_EQ(peer.messages()[1][u"type"_s], u"b"_s);
    EXPECT_EQ(sent(), (QStringList{QString(), QString()}));
}

TEST_F(BackendLinkTest, deliversTextFramesInOrder) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.send(R"({"type":"translation","original":"ä","translation":"😀"})");
    peer.send(R"({"type":"flushed"})");
    ASSERT_TRUE(waitUntil([&] { return received.size() == 2; }));
    EXPECT_EQ(received[0], DownstreamMessage(Result{u"ä"_s, u"😀"_s}));
    EXPECT_EQ(received[1], DownstreamMessage(FlushedMessage{}));
}

TEST_F(BackendLinkTest, takesADataFrameOfJsonLikeTextAndIgnoresAnyOther) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.command({{u"sendBinary"_s, QString::fromLatin1(QByteArray("\xff\xff").toBase64())}});
    peer.command(
        {{u"sendBinary"_s, QString::fromLatin1(QByteArray(R"({"type":"flushed"})").toBase64())}});
    ASSERT_TRUE(waitUntil([&] { return !received.isEmpty(); }));
    EXPECT_EQ(received, QList<DownstreamMessage>{FlushedMessage{}});
    EXPECT_TRUE(failures.isEmpty());
}

TEST_F(BackendLinkTest, carriesMessagesOfNearlySixteenMegabytesBothWays) {
    test::WebSocketPeer peer;
    open(peer.port());
    const QByteArray text(16'700'000, 'x');
    link->sender().send(R"({"type":")" + text + R"("})", remember());
    ASSERT_TRUE(waitUntil([&] { return peer.messages().size() == 1; }));
    EXPECT_EQ(peer.messages()[0][u"type"_s].toString().size(), text.size());
    peer.send(R"({"type":"translation","original":")" + text + R"("})");
    ASSERT_TRUE(waitUntil([&] { return received.size() == 1; }));
    EXPECT_EQ(std::get<Result>(received[0]).original.size(), text.size());
}

TEST_F(BackendLinkTest, refusesAMessageThatIsTooLargeAndStaysUp) {
    test::WebSocketPeer peer;
    open(peer.port());
    link->sender().send(QByteArray(16'777'217, 'x'), remember());
    ASSERT_TRUE(waitUntil([&] { return sent().size() == 1; }));
    EXPECT_FALSE(sent()[0].isEmpty());
    link->sender().send("{}", remember());
    ASSERT_TRUE(waitUntil([&] { return peer.messages().size() == 1; }));
    EXPECT_TRUE(failures.isEmpty());
}

TEST_F(BackendLinkTest, failsOnceWhenAnIncomingMessageIsTooLarge) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.send(QByteArray(17'000'000, 'x'));
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"closed"_s) == 1; }));
    EXPECT_EQ(failures.size(), 1);
    EXPECT_TRUE(received.isEmpty());
}

TEST_F(BackendLinkTest, tellsOnceThatThePeerClosed) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.command({{u"close"_s, 1011}});
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    EXPECT_EQ(failures, QStringList{u"Verbindung von der Gegenseite beendet (Code 1011): bye"_s});
    link->sender().send("{}", remember());
    ASSERT_TRUE(waitUntil([&] { return sent().size() == 1; }));
    EXPECT_FALSE(sent()[0].isEmpty());
}

TEST_F(BackendLinkTest, tellsOnceThatThePeerVanished) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    test::drainEvents();
    EXPECT_EQ(failures.size(), 1);
}

TEST_F(BackendLinkTest, failsOnInvalidUtf8InATextFrame) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.command({{u"sendInvalidText"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    EXPECT_TRUE(received.isEmpty());
}

TEST_F(BackendLinkTest, tellsThatNobodyListens) {
    const test::RefusingPort nobody;
    open(nobody.port());
    link->sender().send("{}", remember());
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 1 && sent().size() == 1; }));
    EXPECT_FALSE(failures[0].isEmpty());
    EXPECT_EQ(sent()[0], failures[0]);
}

TEST_F(BackendLinkTest, tellsWhatTheSocketSaysOfAnAnswerThatIsNoHandshake) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&server] {
        QTcpSocket* socket = server.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
        });
    });
    open(server.serverPort());
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    EXPECT_TRUE(failures[0].contains(u"404"_s)) << failures[0].toStdString();
}

TEST_F(BackendLinkTest, boundsWhatWaitsForAPeerThatDoesNotTakeIt) {
    QTcpServer listener; // Takes connections, answers nothing and reads nothing.
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    open(listener.serverPort());
    const QByteArray sound(8 << 20, 'x');
    for (int i = 0; i < 5; ++i) {
        link->sender().send(sound, remember());
    }
    link->sender().send("{}", remember());
    ASSERT_TRUE(waitUntil([&] { return !sent().isEmpty(); }));
    EXPECT_EQ(sent(), QStringList{u"Der Server nimmt nichts mehr an, 32 MB warten"_s})
        << "four wait, and so does the short one";
    link.reset();
    EXPECT_TRUE(waitUntil([&] { return sent().size() == 6; }));
}

TEST_F(BackendLinkTest, givesUpAPeerThatNeverAnswersTheHandshake) {
    QTcpServer mute;
    ASSERT_TRUE(mute.listen(QHostAddress::LocalHost));
    open(mute.serverPort(), {.handshake = 50ms, .closing = 50ms});
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }));
    EXPECT_EQ(failures, QStringList{u"Zeitüberschreitung beim Verbinden"_s});
}

TEST_F(BackendLinkTest, closesWithGoingAwayAndNoReasonAfterWhatWasSentBefore) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    link->sender().send(R"({"type":"last"})");
    link->cancel();
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"closed"_s) == 1; }));
    EXPECT_EQ(peer.messages().size(), 1);
    EXPECT_EQ(peer.events().last()[u"code"_s], 1001);
    EXPECT_EQ(peer.events().last()[u"reason"_s], QString());
    EXPECT_TRUE(failures.isEmpty());
}

TEST_F(BackendLinkTest, saysNothingMoreOnceCancelled) {
    test::WebSocketPeer peer;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    const BackendLink::Sender sender = link->sender();
    link->cancel();
    EXPECT_FALSE(sender.send("{}", remember()));
    peer.send(R"({"type":"flushed"})");
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"closed"_s) == 1; }));
    test::drainEvents();
    EXPECT_TRUE(received.isEmpty());
    EXPECT_TRUE(failures.isEmpty());
}

TEST_F(BackendLinkTest, mayBeDestroyedByItsListener) {
    test::WebSocketPeer peer;
    endsLinkWhenFlushed = true;
    open(peer.port());
    ASSERT_TRUE(waitUntil([&] { return peer.count(u"open"_s) == 1; }));
    peer.send(R"({"type":"flushed"})");
    ASSERT_TRUE(waitUntil([&] { return !link && peer.count(u"closed"_s) == 1; }));
}

TEST_F(BackendLinkTest, mayBeDestroyedWhileConnecting) {
    QTcpServer mute;
    ASSERT_TRUE(mute.listen(QHostAddress::LocalHost));
    open(mute.serverPort());
    link->sender().send("{}", remember());
    link.reset();
    ASSERT_TRUE(waitUntil([&] { return sent().size() == 1; }));
    EXPECT_FALSE(sent()[0].isEmpty());
}

} // namespace
} // namespace orv
