// What a client may cost: bounds on number, time and descriptors.

#include "OverlayConnections.h"

#include "FewFiles.h"
#include "LoopbackClient.h"
#include "OverlayServerFixture.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <vector>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::bodyOf;
using test::get;
using test::LoopbackClient;
using test::waitUntil;
using End = LoopbackClient::End;

namespace {

const QByteArray request = "GET /text HTTP/1.1\r\n\r\n";

class OverlayConnectionsTest : public test::OverlayServerFixture {
  protected:
    /// A result that no socket buffer holds.
    void broadcastMuch() { server->broadcast({QString(16 << 20, u'x'), {}}); }

    /// A connected client that has asked for much and takes nothing of it.
    static void askSlowly(LoopbackClient& client, std::uint16_t port) {
        client.takeLittleAtATime();
        ASSERT_TRUE(client.connect(port));
        client.send(request);
        EXPECT_EQ(client.read(4), "HTTP"); // Being answered by now.
    }
};

std::chrono::nanoseconds processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

TEST(WaitingConnectionBound, leavesHalfOfTheDescriptorsToTheRestOfTheProgram) {
    const OverlayLimits limits;
    EXPECT_EQ(waitingConnectionBound(limits, 1024), 512U);
    EXPECT_EQ(waitingConnectionBound(limits, 4000), 2000U);
    EXPECT_EQ(waitingConnectionBound(limits, 1'000'000), 2000U);
    EXPECT_EQ(waitingConnectionBound(limits, 0), 1U);
}

TEST_F(OverlayConnectionsTest, dropsAClientThatNeverSaysAnything) {
    OverlayLimits limits = withoutDeferral();
    limits.silentClient = 50ms;
    limits.sweep = 10ms;
    replaceServer(limits);
    LoopbackClient client(startAnywhere());
    EXPECT_EQ(client.readAll(), QByteArray());
    EXPECT_EQ(client.end(), End::Closed);
}

TEST_F(OverlayConnectionsTest, dropsASilentClientThatTheSystemHeldBackToo) {
    OverlayLimits limits;
    limits.silentClient = 50ms;
    limits.sweep = 10ms;
    replaceServer(limits);
    LoopbackClient client(startAnywhere());
    EXPECT_EQ(client.readAll(), QByteArray());
    EXPECT_EQ(client.end(), End::Closed);
}

TEST_F(OverlayConnectionsTest, letsAClientBeSilentForAWhile) {
    OverlayLimits limits = withoutDeferral();
    limits.sweep = 10ms;
    replaceServer(limits);
    LoopbackClient client(startAnywhere());
    EXPECT_EQ(client.waitForEnd(300ms), End::StillOpen);
    client.send(request);
    EXPECT_EQ(client.readAll(), server->response("/text").bytes());
}

TEST_F(OverlayConnectionsTest, dropsAClientThatDoesNotTakeItsAnswer) {
    OverlayLimits limits;
    limits.slowReader = 50ms;
    limits.sweep = 10ms;
    replaceServer(limits);
    broadcastMuch();
    LoopbackClient client;
    askSlowly(client, startAnywhere());
    // The connection has ended when sending to it fails.
    EXPECT_TRUE(waitUntil([&] { return !client.send("x"); }));
    EXPECT_LT(client.readAll().size(), 16 << 20);
    EXPECT_NE(client.end(), End::StillOpen);
}

TEST_F(OverlayConnectionsTest, doesNotWaitForeverForAClientToClose) {
    OverlayLimits limits;
    limits.lingering = 50ms;
    limits.sweep = 10ms;
    replaceServer(limits);
    LoopbackClient client(startAnywhere());
    client.send("GET /text HTTP/1.1\r\n"); // Not whole: more may come.
    EXPECT_EQ(client.readAll(), server->response("/text").bytes());
    EXPECT_EQ(client.end(), End::Closed);
    EXPECT_TRUE(waitUntil([&] { return !client.send("x"); }));
}

TEST_F(OverlayConnectionsTest, givesUpTheOldestSilentClientWhenFull) {
    OverlayLimits limits = withoutDeferral();
    limits.waitingConnections = 2;
    replaceServer(limits);
    const std::uint16_t port = startAnywhere();
    LoopbackClient first(port);
    LoopbackClient second(port);
    LoopbackClient third(port);
    EXPECT_EQ(first.readAll(), QByteArray());
    EXPECT_EQ(first.end(), End::Closed);
    for (LoopbackClient* client : {&second, &third}) {
        client->send(request);
        EXPECT_EQ(client->readAll(), server->response("/text").bytes());
    }
}

TEST_F(OverlayConnectionsTest, givesUpASilentClientBeforeAnOlderOneThatIsBeingAnswered) {
    OverlayLimits limits = withoutDeferral();
    limits.waitingConnections = 2;
    replaceServer(limits);
    broadcastMuch();
    const std::uint16_t port = startAnywhere();
    LoopbackClient slow;
    askSlowly(slow, port);
    LoopbackClient silent(port);
    LoopbackClient next(port);
    EXPECT_EQ(silent.readAll(), QByteArray());
    EXPECT_EQ(silent.end(), End::Closed);
    const qsizetype whole = server->response("/text").bytes().size();
    EXPECT_EQ(slow.readAll().size(), whole - 4);
}

TEST_F(OverlayConnectionsTest, givesUpTheOldestOfAllWhenNoneIsSilent) {
    OverlayLimits limits = withoutDeferral();
    limits.waitingConnections = 1;
    replaceServer(limits);
    broadcastMuch();
    const std::uint16_t port = startAnywhere();
    LoopbackClient slow;
    askSlowly(slow, port);
    LoopbackClient next(port);
    EXPECT_TRUE(waitUntil([&] { return !slow.send("x"); }));
    next.send("GET /favicon.ico HTTP/1.1\r\n\r\n");
    EXPECT_EQ(bodyOf(next.readAll()), "Not Found");
}

TEST_F(OverlayConnectionsTest, answersWhileFullOfSilentClients) {
    OverlayLimits limits;
    limits.waitingConnections = 3;
    replaceServer(limits);
    const std::uint16_t port = startAnywhere();
    std::vector<LoopbackClient> silent(20);
    for (LoopbackClient& client : silent) {
        ASSERT_TRUE(client.connect(port));
    }
    for (int turn = 0; turn < 50; ++turn) {
        EXPECT_EQ(get(port, "/text"), server->response("/text").bytes());
    }
}

TEST_F(OverlayConnectionsTest, waitsWithoutSpinningUntilThereAreDescriptorsAgain) {
    const std::uint16_t port = startAnywhere();
    EXPECT_EQ(get(port, "/text"), server->response("/text").bytes());
    LoopbackClient client;
    {
        const test::FewFiles none(0);
        ASSERT_TRUE(client.connect(port));
        client.send(request);
        const auto before = processorTime();
        EXPECT_EQ(client.waitForEnd(500ms), End::StillOpen);
        EXPECT_LT(processorTime() - before, 200ms);
    }
    EXPECT_EQ(client.readAll(), server->response("/text").bytes());
    EXPECT_TRUE(server->isRunning());
}

TEST_F(OverlayConnectionsTest, givesUpASilentClientForAnotherOnesDescriptor) {
    replaceServer(withoutDeferral());
    const std::uint16_t port = startAnywhere();
    LoopbackClient silent(port);
    EXPECT_EQ(get(port, "/text"), server->response("/text").bytes());
    LoopbackClient client;
    const test::FewFiles none(0);
    ASSERT_TRUE(client.connect(port));
    client.send(request);
    EXPECT_EQ(client.readAll(), server->response("/text").bytes());
    EXPECT_EQ(silent.waitForEnd(20s), End::Closed);
}

} // namespace orv
