#include "VmixRequests.h"

#include "Post.h"
#include "WaitUntil.h"

#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/socket.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

using Clock = std::chrono::steady_clock;

/// Requests and their server, all on the test's thread: what comes in one round of its event loop
/// is the test's to decide.
class VmixRequestsTest : public ::testing::Test {
  protected:
    VmixRequestsTest() { EXPECT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost))); }

    void add(Clock::time_point deadline, VmixRequests::Done done) {
        const QUrl url(u"http://127.0.0.1:%1/API/"_s.arg(server.serverPort()));
        requests.add(url, std::move(done), deadline);
    }

    /// The server's end of the next connection, over which a request has come.
    QTcpSocket* nextRequest() {
        EXPECT_TRUE(waitUntil([this] { return server.hasPendingConnections(); }));
        QTcpSocket* connection = server.nextPendingConnection();
        EXPECT_TRUE(waitUntil([&] { return connection->bytesAvailable() > 0; }));
        return connection;
    }

    /// Whether the other side has closed it by now, also before this loop has heard of that.
    static bool isClosed(const QTcpSocket& connection) {
        if (connection.state() != QAbstractSocket::ConnectedState) {
            return true;
        }
        char byte = 0;
        const auto descriptor = static_cast<int>(connection.socketDescriptor());
        const ssize_t count = ::recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        return count == 0 || (count < 0 && errno != EAGAIN);
    }

    QTcpServer server;
    VmixRequests requests{{.connectionsPerHost = 1}, systemLookUp};
};

TEST_F(VmixRequestsTest, anAnswerThatComesTogetherWithTheDeadlineEndsNoOtherRequest) {
    QStringList ends;
    QStringList endsOfOthers;
    QEventLoop loop;
    const auto deadline = Clock::now() + 5s;
    add(deadline, [&](const QString& error) {
        ends.append(error);
        post(&loop, [&] { loop.quit(); });
        // These come to stand where the first one stood.
        for (int i = 0; i < 5; ++i) {
            add(Clock::now() + 60s, [&](const QString& other) { endsOfOthers.append(other); });
        }
    });
    QTcpSocket* connection = nextRequest();
    ASSERT_TRUE(ends.isEmpty()) << "the request has come in time";
    connection->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    ASSERT_TRUE(connection->waitForBytesWritten());
    // The thread is busy until both are there for the same round of its loop.
    std::this_thread::sleep_until(deadline + 10ms);
    // Not waitUntil, which moves deferred deletions ahead of all else.
    QTimer::singleShot(20s, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(ends, QStringList{u"Zeitüberschreitung der Anfrage"_s});
    EXPECT_TRUE(endsOfOthers.isEmpty()) << "nobody has answered them";
    nextRequest()->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_TRUE(waitUntil([&] { return !endsOfOthers.isEmpty(); })) << "and they can be answered";
}

TEST_F(VmixRequestsTest, theConnectionOfARequestThatIsOverdueIsClosedBeforeTheNextOneOpens) {
    QTcpSocket* connection = nullptr;
    bool closed = false;
    bool ended = false;
    add(Clock::now() + 5s, [&](const QString& error) {
        EXPECT_EQ(error, u"Zeitüberschreitung der Anfrage"_s);
        closed = connection != nullptr && isClosed(*connection);
        ended = true;
    });
    add(Clock::now() + 60s, {});
    connection = nextRequest();
    EXPECT_FALSE(isClosed(*connection));
    ASSERT_TRUE(waitUntil([&] { return ended; }));
    EXPECT_TRUE(closed) << "whoever is told finds it closed, and only then the next one starts";
    nextRequest();
}

TEST_F(VmixRequestsTest, whoeverIsToldOfAnAnswerFindsTheConnectionClosed) {
    QTcpSocket* connection = nullptr;
    bool closed = false;
    bool ended = false;
    add(Clock::now() + 60s, [&](const QString& error) {
        EXPECT_EQ(error, QString());
        closed = isClosed(*connection);
        ended = true;
    });
    connection = nextRequest();
    connection->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    ASSERT_TRUE(waitUntil([&] { return ended; }));
    EXPECT_TRUE(closed);
}

} // namespace

} // namespace orv::test
