#include "ConnectionRace.h"

#include "Ports.h"
#include "WaitUntil.h"

#include <QTcpServer>

#include <gtest/gtest.h>

#include <array>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

/// A port of the loopback interface whose queue is full, so that further connections are swallowed
/// without an answer.
class Swallower {
  public:
    Swallower() {
        server_.setListenBacklogSize(0);
        EXPECT_TRUE(server_.listen(QHostAddress(u"127.0.0.1"_s)));
        server_.pauseAccepting();
        for (QTcpSocket& socket : fill_) {
            socket.connectToHost(server_.serverAddress(), server_.serverPort());
        }
        waitUntil([this] { return fill_[0].state() == QAbstractSocket::ConnectedState; });
    }

    quint16 port() const { return server_.serverPort(); }

  private:
    QTcpServer server_;
    std::array<QTcpSocket, 4> fill_;
};

class ConnectionRaceTest : public ::testing::Test {
  protected:
    /// One address for each port: the sockets go to 127.0.0.1 and that port.
    void run(const QList<quint16>& ports, std::chrono::milliseconds headStart = 1h) {
        QList<QHostAddress> addresses;
        for (const quint16 port : ports) {
            addresses.append(QHostAddress(quint32(port)));
        }
        const auto connect = [this](const QHostAddress& address) {
            ++tries;
            auto socket = std::make_unique<QTcpSocket>();
            socket->connectToHost(u"127.0.0.1"_s, quint16(address.toIPv4Address()));
            return socket;
        };
        race.emplace(addresses, connect, headStart);
        QObject::connect(&*race, &ConnectionRace::won, &*race, [this] { ++wins; });
        QObject::connect(&*race, &ConnectionRace::lost, &*race,
                         [this](const QString& error) { losses.append(error); });
        race->start();
    }

    int tries = 0;
    int wins = 0;
    QStringList losses;
    std::optional<ConnectionRace> race;
};

TEST_F(ConnectionRaceTest, theFirstAddressThatAnswersIsTheOnlyOneTried) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    run({server.serverPort(), server.serverPort()});
    ASSERT_TRUE(waitUntil([this] { return wins == 1; }));
    const auto winner = race->takeWinner();
    EXPECT_EQ(winner->peerPort(), server.serverPort());
    EXPECT_EQ(tries, 1);
    drainEvents();
    EXPECT_TRUE(losses.isEmpty());
}

TEST_F(ConnectionRaceTest, anAddressThatRefusesMakesRoomAtOnce) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    run({freePort(), freePort(), server.serverPort()});
    ASSERT_TRUE(waitUntil([this] { return wins == 1; }));
    EXPECT_EQ(tries, 3);
    EXPECT_EQ(race->takeWinner()->state(), QAbstractSocket::ConnectedState);
}

TEST_F(ConnectionRaceTest, anAddressThatSwallowsEverythingHasItsHeadStartOnly) {
    const Swallower swallower;
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    run({swallower.port(), server.serverPort()}, 50ms);
    ASSERT_TRUE(waitUntil([this] { return wins == 1; }));
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(race->takeWinner()->peerPort(), server.serverPort());
    EXPECT_EQ(wins, 1);
}

TEST_F(ConnectionRaceTest, itIsLostWhenNobodyTakesTheConnection) {
    run({freePort(), freePort()});
    ASSERT_TRUE(waitUntil([this] { return !losses.isEmpty(); }));
    EXPECT_EQ(losses.size(), 1);
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(wins, 0);
}

TEST_F(ConnectionRaceTest, destroyingItGivesEverythingUp) {
    const Swallower swallower;
    run({swallower.port(), swallower.port()}, 1ms);
    ASSERT_TRUE(waitUntil([this] { return tries == 2; }));
    race.reset();
    drainEvents();
    EXPECT_EQ(wins, 0);
    EXPECT_TRUE(losses.isEmpty());
}

TEST(ConnectionRace, givesAQuarterOfASecond) {
    EXPECT_EQ(ConnectionRace::usualHeadStart, 250ms);
}

} // namespace

} // namespace orv::test
