// One request per connection: what clients of every kind get.

#include "LoopbackClient.h"
#include "OverlayServerFixture.h"

#include <QNetworkInterface>
#include <QTcpSocket>

#include <atomic>
#include <thread>
#include <vector>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::bodyOf;
using test::get;
using test::LoopbackClient;

namespace {

class OverlayServingTest : public test::OverlayServerFixture {
  protected:
    /// The whole answer to bytes after which the client stays open.
    QByteArray answerTo(const QByteArray& bytes) {
        LoopbackClient client(port);
        client.send(bytes);
        QByteArray answer = client.readAll();
        EXPECT_EQ(client.end(), LoopbackClient::End::Closed);
        return answer;
    }

    /// A server that gives no client up, however slow the machine.
    std::uint16_t startPatiently() {
        OverlayLimits limits;
        limits.silentClient = 1min;
        limits.slowReader = 1min;
        limits.lingering = 1min;
        replaceServer(limits);
        return startAnywhere();
    }

    const std::uint16_t port = startPatiently();
    const QByteArray page = server->response("/").bytes();
    const QByteArray text = server->response("/text").bytes();
};

} // namespace

TEST_F(OverlayServingTest, answersWithTheDocument) {
    EXPECT_EQ(get(port, "/text"), text);
    EXPECT_TRUE(text.contains("Content-Type: application/json; charset=utf-8\r\n"));
    EXPECT_TRUE(text.endsWith("}"));
}

TEST_F(OverlayServingTest, ignoresTheQuery) {
    EXPECT_EQ(get(port, "/text?x=1"), text);
}

TEST_F(OverlayServingTest, answersWithThePage) {
    EXPECT_EQ(get(port, "/"), page);
    EXPECT_EQ(get(port, "/overlay"), page);
    EXPECT_TRUE(page.contains("Content-Type: text/html; charset=utf-8\r\n"));
    EXPECT_TRUE(page.endsWith("</html>\n"));
}

TEST_F(OverlayServingTest, answersAnythingElseWithStatus200AndNotFound) {
    const QByteArray answer = get(port, "/favicon.ico");
    EXPECT_TRUE(answer.startsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(answer.contains("Content-Type: text/plain; charset=utf-8\r\n"));
    EXPECT_EQ(bodyOf(answer), "Not Found");
}

TEST_F(OverlayServingTest, answersEveryMethodAlike) {
    for (const char* method : {"HEAD", "POST", "OPTIONS", "xyz"}) {
        EXPECT_EQ(answerTo(QByteArray(method) + " /text HTTP/1.1\r\n\r\n"), text) << method;
    }
}

TEST_F(OverlayServingTest, answersARequestWithABodyThatComesLater) {
    LoopbackClient client(port);
    client.send("POST /text HTTP/1.1\r\nContent-Length: 100000\r\n\r\n");
    EXPECT_EQ(client.read(20), text.first(20));
    EXPECT_TRUE(client.send(QByteArray(100000, 'x')));
    EXPECT_EQ(client.readAll(), text.sliced(20));
    EXPECT_EQ(client.end(), LoopbackClient::End::Closed);
}

TEST_F(OverlayServingTest, answersAnEmptyReadWithThePage) {
    LoopbackClient client(port);
    client.finishSending();
    EXPECT_EQ(client.readAll(), page);
}

TEST_F(OverlayServingTest, answersBytesThatAreNotUtf8WithThePage) {
    EXPECT_EQ(answerTo("GET /text HTTP/1.1\r\nX: \xFF\r\n\r\n"), page);
    EXPECT_EQ(answerTo(QByteArray("\x16\x03\x01\x02\x00\x01\x00\xFC", 8)), page);
}

TEST_F(OverlayServingTest, answersASingleLineFeedWithThePage) {
    EXPECT_EQ(answerTo("\n"), page);
}

TEST_F(OverlayServingTest, looksOnlyAtTheFirstReadOfASlowClient) {
    LoopbackClient client(port);
    const QByteArray request = "GET /text HTTP/1.1\r\nHost: localhost\r\n\r\n";
    client.send(request.first(1));
    EXPECT_EQ(client.read(20), page.first(20)); // The answer is there before the second byte.
    for (const char byte : request.sliced(1)) {
        EXPECT_TRUE(client.send(QByteArray(1, byte)));
    }
    EXPECT_EQ(client.readAll(), page.sliced(20));
    EXPECT_EQ(client.end(), LoopbackClient::End::Closed);
}

TEST_F(OverlayServingTest, answersAHugeRequestWithoutResettingIt) {
    LoopbackClient client(port);
    QByteArray request = "GET /text HTTP/1.1\r\n";
    while (request.size() < 4 << 20) {
        request += "X-Header: 0123456789012345678901234567890123456789\r\n";
    }
    EXPECT_TRUE(client.send(request + "\r\n"));
    EXPECT_EQ(client.readAll(), text);
    EXPECT_EQ(client.end(), LoopbackClient::End::Closed);
}

TEST_F(OverlayServingTest, answersTheFirstOfSeveralRequests) {
    EXPECT_EQ(answerTo("GET /text HTTP/1.1\r\n\r\nGET / HTTP/1.1\r\n\r\n"), text);
}

TEST_F(OverlayServingTest, survivesAClientThatLeavesAtOnce) {
    for (int turn = 0; turn < 50; ++turn) {
        LoopbackClient client(port);
        client.send("GET /text HTTP/1.1\r\n\r\n");
    }
    EXPECT_EQ(get(port, "/text"), text);
}

TEST_F(OverlayServingTest, answersHundredsAtTheSameTime) {
    std::vector<LoopbackClient> clients(400);
    for (LoopbackClient& client : clients) {
        ASSERT_TRUE(client.connect(port));
    }
    for (LoopbackClient& client : clients) {
        client.send("GET /text HTTP/1.1\r\n\r\n");
    }
    for (LoopbackClient& client : clients) {
        EXPECT_EQ(client.readAll(), text);
    }
}

TEST_F(OverlayServingTest, answersManyThreads) {
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 50; ++turn) {
                good += get(port, "/text") == text ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 400);
}

TEST_F(OverlayServingTest, sendsAnAnswerThatFitsNoBuffer) {
    server->broadcast({QString(8 << 20, u'ü'), u"x"_s});
    const QByteArray answer = get(port, "/text");
    EXPECT_EQ(answer, server->response("/text").bytes());
    EXPECT_GT(answer.size(), 16 << 20);
}

TEST_F(OverlayServingTest, listensOnEveryInterface) {
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (address.isLinkLocal()) {
            continue; // Those need to be told the interface too.
        }
        QTcpSocket client;
        client.connectToHost(address, port);
        EXPECT_TRUE(client.waitForConnected()) << address.toString().toStdString();
    }
}

TEST_F(OverlayServingTest, stillAnswersWhoWasConnectedBeforeTheStop) {
    replaceServer(withoutDeferral());
    LoopbackClient early(startAnywhere());
    const std::uint16_t lastPort = server->activePort();
    EXPECT_EQ(get(lastPort, "/text"), text); // The earlier one has been accepted, too.
    stopAndWait();
    EXPECT_FALSE(LoopbackClient().connect(lastPort));
    early.send("GET /text HTTP/1.1\r\n\r\n");
    EXPECT_EQ(early.readAll(), text);
}

TEST_F(OverlayServingTest, endsOpenConnectionsWithoutAnAnswerWhenItIsDestroyed) {
    replaceServer(withoutDeferral());
    LoopbackClient client(startAnywhere());
    EXPECT_EQ(get(server->activePort(), "/text"), text);
    server.reset();
    client.send("GET /text HTTP/1.1\r\n\r\n");
    EXPECT_EQ(client.readAll(), QByteArray());
    EXPECT_NE(client.end(), LoopbackClient::End::StillOpen);
}

} // namespace orv
