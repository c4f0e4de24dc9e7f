// Starting and stopping by settings, and the results.

#include "FewFiles.h"
#include "LoopbackClient.h"
#include "OverlayServerFixture.h"
#include "Ports.h"

#include <QDateTime>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <limits>
#include <optional>
#include <thread>

namespace orv {

using namespace Qt::StringLiterals;
using test::bodyOf;
using test::freePort;
using test::get;
using test::LoopbackClient;
using test::waitUntil;

namespace {

const QString startFailed = u"❌ OBS-Overlay-Server start failed: "_s;

QString runningLine(std::uint16_t port) {
    return u"✓ OBS-Overlay-Server läuft auf http://localhost:%1/overlay"_s.arg(port);
}

QJsonObject document(std::uint16_t port) {
    return QJsonDocument::fromJson(bodyOf(get(port, "/text"))).object();
}

/// The socket of this process that listens on `port`; negative when there is none.
int listeningSocket(std::uint16_t port) {
    const QStringList numbers =
        QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::Files | QDir::System);
    for (const QString& number : numbers) {
        const int descriptor = number.toInt();
        int listens = 0;
        socklen_t length = sizeof listens;
        sockaddr_in6 address{};
        socklen_t addressLength = sizeof address;
        if (::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &length) == 0 &&
            listens != 0 &&
            ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &addressLength) == 0 &&
            ntohs(address.sin6_port) == port) {
            return descriptor;
        }
    }
    return -1;
}

class OverlayServerTest : public test::OverlayServerFixture {
  protected:
    /// Has the settings ask for `stored` until the server runs there: another program may hold the
    /// port for a while.
    bool runBySettings(std::int64_t stored) {
        settings.obsOverlayPort.set(stored);
        settings.obsOverlayEnabled.set(true);
        qsizetype answered = log.lines().size();
        applySettings(*server);
        return waitUntil([&] {
            if (log.lines().size() > answered && !server->isRunning()) {
                answered = log.lines().size();
                applySettings(*server);
            }
            return server->activePort() == overlayPort(stored) && server->isRunning();
        });
    }

    /// The line comes a moment after the server runs.
    bool tellsThatItRunsOn(std::uint16_t port) {
        return waitUntil([&] { return log.contains(runningLine(port)); });
    }

    /// Runs by settings on some port.
    std::uint16_t runBySettingsAnywhere() {
        const std::uint16_t port = freePort();
        EXPECT_TRUE(runBySettings(port));
        EXPECT_EQ(server->activePort(), port);
        return port;
    }
};

} // namespace

TEST(OverlayPort, replacesPortsThatCannotBe) {
    EXPECT_EQ(overlayPort(0), 8077);
    EXPECT_EQ(overlayPort(-5), 8077);
    EXPECT_EQ(overlayPort(std::numeric_limits<std::int64_t>::min()), 8077);
    EXPECT_EQ(overlayPort(1), 1);
    EXPECT_EQ(overlayPort(8077), 8077);
    EXPECT_EQ(overlayPort(65535), 65535);
    EXPECT_EQ(overlayPort(65536), 65535);
    EXPECT_EQ(overlayPort(70000), 65535);
    EXPECT_EQ(overlayPort(std::numeric_limits<std::int64_t>::max()), 65535);
}

TEST_F(OverlayServerTest, startsOn65535ForASettingOf70000) {
    ASSERT_TRUE(runBySettings(70000));
    EXPECT_EQ(server->activePort(), 65535);
    EXPECT_TRUE(tellsThatItRunsOn(65535));
    EXPECT_EQ(bodyOf(get(65535, "/x")), "Not Found");
}

TEST_F(OverlayServerTest, startsOn8077ForASettingOf0) {
    ASSERT_TRUE(runBySettings(0));
    EXPECT_EQ(server->activePort(), 8077);
    EXPECT_EQ(bodyOf(get(8077, "/x")), "Not Found");
}

TEST_F(OverlayServerTest, staysStoppedWithAnEmptyStore) {
    applySettings(*server);
    server->start(0); // The line of this start is the first one when the settings started nothing.
    ASSERT_TRUE(waitUntil([this] { return server->isRunning(); }));
    ASSERT_TRUE(tellsThatItRunsOn(server->activePort()));
    EXPECT_EQ(log.lines(), QStringList(runningLine(server->activePort())));
}

TEST_F(OverlayServerTest, runsAndStopsAsTheSettingsSay) {
    const std::uint16_t port = runBySettingsAnywhere();
    EXPECT_TRUE(tellsThatItRunsOn(port));

    settings.obsOverlayEnabled.set(false);
    applySettings(*server);
    ASSERT_TRUE(waitUntil([this] { return !server->isRunning(); }));
    EXPECT_FALSE(LoopbackClient().connect(port));
}

TEST_F(OverlayServerTest, keepsRunningWhenNothingChanged) {
    const std::uint16_t port = runBySettingsAnywhere();
    applySettings(*server);
    applySettings(*server);
    stopAndWait();
    EXPECT_EQ(log.count(runningLine(port)), 1);
}

TEST_F(OverlayServerTest, movesToAnotherPort) {
    const std::uint16_t before = runBySettingsAnywhere();
    const std::uint16_t after = freePort();
    ASSERT_TRUE(runBySettings(after));
    EXPECT_FALSE(LoopbackClient().connect(before));
    EXPECT_EQ(bodyOf(get(after, "/x")), "Not Found");
}

TEST_F(OverlayServerTest, takesAPortAgainThatWasUsedAMomentAgo) {
    const std::uint16_t port = startAnywhere();
    EXPECT_EQ(bodyOf(get(port, "/x")), "Not Found"); // Leaves a connection in TIME_WAIT.
    for (int turn = 2; turn < 5; ++turn) {
        server->start(port);
        ASSERT_TRUE(waitUntil([&] { return log.count(runningLine(port)) == turn; }));
        EXPECT_EQ(bodyOf(get(port, "/x")), "Not Found");
    }
}

TEST_F(OverlayServerTest, saysWhyItCannotStartAndStartsLater) {
    OverlayServer other;
    const std::uint16_t port = startAnywhere();
    other.start(port);
    ASSERT_TRUE(waitUntil([this] { return log.containsStart(startFailed); }));
    EXPECT_TRUE(log.contains(startFailed + u"Address already in use"_s));
    EXPECT_FALSE(other.isRunning());

    stopAndWait();
    settings.obsOverlayPort.set(port);
    settings.obsOverlayEnabled.set(true);
    applySettings(other);
    EXPECT_TRUE(waitUntil([&] { return other.isRunning(); }));
    EXPECT_EQ(other.activePort(), port);
}

#if ORV_MAY_LACK_FILES

TEST_F(OverlayServerTest, startsLaterWhereTheSystemHadTooFewDescriptors) {
    ASSERT_FALSE(server->isRunning());
    const bool hasIpv6 = UniqueFd(::socket(AF_INET6, SOCK_STREAM, 0)).isOpen();
    std::optional<test::FewFiles> justForTheListener(hasIpv6 ? 2 : 1);
    server->start(0);
    ASSERT_TRUE(waitUntil(
        [this] { return log.containsStart(u"❌ OBS-Overlay-Server fehlgeschlagen: "_s); }));
    justForTheListener.reset();
    EXPECT_EQ(bodyOf(get(startAnywhere(), "/x")), "Not Found");
}

#endif

TEST_F(OverlayServerTest, isStoppedAfterAFailedRestart) {
    OverlayServer other;
    const std::uint16_t first = startAnywhere();
    other.start(0);
    ASSERT_TRUE(waitUntil([&] { return other.isRunning(); }));
    server->start(other.activePort());
    ASSERT_TRUE(waitUntil([this] { return log.containsStart(startFailed); }));
    EXPECT_FALSE(server->isRunning());
    EXPECT_FALSE(LoopbackClient().connect(first));
}

TEST_F(OverlayServerTest, saysThatItsListenerFailedAndStartsAgain) {
    const std::uint16_t port = runBySettingsAnywhere();
    ASSERT_EQ(::shutdown(listeningSocket(port), SHUT_RDWR), 0);
    ASSERT_TRUE(waitUntil([this] { return !server->isRunning(); }));
    ASSERT_TRUE(waitUntil([this] {
        return log.contains(u"❌ OBS-Overlay-Server fehlgeschlagen: Invalid argument"_s);
    }));

    ASSERT_TRUE(runBySettings(port));
    EXPECT_EQ(bodyOf(get(port, "/x")), "Not Found");
}

TEST_F(OverlayServerTest, hasEmptyTextsBeforeAnyResult) {
    const QJsonObject expected{
        {u"original"_s, QString()},
        {u"translation"_s, QString()},
        {u"ts"_s, 0},
        {u"showOriginal"_s, false},
        {u"style"_s, QJsonObject{{u"background"_s, u"rgba(144,238,144,0.85)"_s},
                                 {u"border"_s, u"3px solid #2E7D32"_s},
                                 {u"color"_s, u"#000000"_s}}}};
    EXPECT_EQ(document(startAnywhere()), expected);
}

TEST_F(OverlayServerTest, servesTheLatestResultWithItsMoment) {
    const std::uint16_t port = startAnywhere();
    server->broadcast({u"eins"_s, u"one"_s});
    const double before = document(port).value(u"ts"_s).toDouble();
    server->broadcast({u"zwei ü"_s, u"two </script>"_s});
    const QJsonObject latest = document(port);
    EXPECT_EQ(latest.value(u"original"_s), u"zwei ü"_s);
    EXPECT_EQ(latest.value(u"translation"_s), u"two </script>"_s);
    EXPECT_GT(latest.value(u"ts"_s).toDouble(), before);
    EXPECT_NEAR(before, static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000, 20);
}

TEST_F(OverlayServerTest, readsShowOriginalAtEveryRequest) {
    const std::uint16_t port = startAnywhere();
    for (const bool shown : {true, false, true}) {
        settings.showOriginal.set(shown);
        EXPECT_EQ(document(port).value(u"showOriginal"_s), shown);
    }
}

TEST_F(OverlayServerTest, keepsItsResultOverStopAndStart) {
    startAnywhere();
    server->broadcast({u"eins"_s, u"one"_s});
    stopAndWait();
    EXPECT_EQ(document(startAnywhere()).value(u"translation"_s), u"one"_s);
}

TEST_F(OverlayServerTest, takesResultsWhileStopped) {
    server->broadcast({u"eins"_s, u"one"_s});
    EXPECT_EQ(document(startAnywhere()).value(u"original"_s), u"eins"_s);
}

TEST_F(OverlayServerTest, neverMixesResultsOfSeveralThreads) {
    const std::uint16_t port = startAnywhere();
    server->broadcast({u"0"_s, u"0"_s});
    std::atomic<bool> finished = false;
    const auto speak = [&](int first) {
        for (int number = first; !finished; number += 2) {
            server->broadcast({QString::number(number), QString::number(number)});
        }
    };
    std::thread even(speak, 2);
    std::thread odd(speak, 1);
    for (int turn = 0; turn < 200; ++turn) {
        const QJsonObject result = document(port);
        EXPECT_TRUE(result.contains(u"original"_s));
        EXPECT_EQ(result.value(u"original"_s), result.value(u"translation"_s));
    }
    finished = true;
    even.join();
    odd.join();
}

TEST_F(OverlayServerTest, followsTheColoursWithoutARestart) {
    const std::uint16_t port = startAnywhere();
    EXPECT_TRUE(get(port, "/overlay").contains("rgba(144,238,144,0.85)"));
    settings.overlayBgColor.set(u"#010203"_s);
    EXPECT_TRUE(get(port, "/overlay").contains("rgba(1,2,3,0.85)"));
    EXPECT_EQ(document(port).value(u"style"_s).toObject().value(u"background"_s),
              u"rgba(1,2,3,0.85)"_s);
    EXPECT_EQ(log.count(runningLine(port)), 1);
}

TEST_F(OverlayServerTest, isAskedForByNameAndClosesWhenItGoes) {
    OverlayServer& shared = OverlayServer::shared();
    EXPECT_EQ(&shared, server.get());
    shared.start(0);
    ASSERT_TRUE(waitUntil([&] { return shared.isRunning(); }));
    const std::uint16_t port = shared.activePort();
    server.reset();
    EXPECT_FALSE(LoopbackClient().connect(port));
}

} // namespace orv
