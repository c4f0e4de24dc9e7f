#include "DeepgramSession.h"
#include "TrustedCertificate.h"

#include <QJsonArray>
#include <QTcpServer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

TEST(DeepgramDirectEngine, isWhatItSays) {
    const DeepgramDirectEngine engine;
    EXPECT_EQ(engine.id(), u"deepgram"_s);
    EXPECT_TRUE(engine.isStreaming());
    EXPECT_FALSE(engine.supportsTranslation());
    EXPECT_FALSE(engine.isConnected());
}

TEST(DeepgramDirectEngine, wantsAKeyBeforeAnyNetwork) {
    QTcpServer listener;
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    DeepgramDirectEngine engine(
        {{deepgramHost, u"ws://127.0.0.1:%1"_s.arg(listener.serverPort())}});
    EngineReports reports(engine);
    const auto outcome = finish(engine.connect({}));
    EXPECT_EQ(outcome.error, u"Deepgram API Key fehlt"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::MissingApiKey);
    test::drainEvents();
    EXPECT_FALSE(listener.hasPendingConnections());
    EXPECT_TRUE(reports.statuses.isEmpty());
}

TEST(DeepgramDirectEngine, saysWhenThereIsNoAddress) {
    DeepgramDirectEngine engine({{deepgramHost, u"no address"_s}});
    const auto outcome = finish(engine.connect(config));
    EXPECT_EQ(outcome.error, u"Ungültige Deepgram URL"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::ConnectionFailed);
}

TEST(DeepgramDirectEngine, connectsWithPathQueryAndKey) {
    DeepgramSession session;
    EXPECT_FALSE(finish(session.engine->connect(config)).error);
    EXPECT_EQ(session.reports.statuses,
              QStringList(u"connected: Deepgram connected (streaming)"_s));
    EXPECT_TRUE(session.engine->isConnected());
    ASSERT_TRUE(session.waitForOpen());
    const QJsonObject open = session.service.events(u"open"_s).first();
    EXPECT_EQ(open[u"path"_s].toString(),
              u"/v1/listen?encoding=linear16&sample_rate=48000&channels=1&model=nova-2"
              u"&interim_results=true&punctuate=true&smart_format=true&language=de"_s);
    EXPECT_EQ(open[u"authorization"_s].toString(), u"Token SECRET"_s);
}

TEST(DeepgramDirectEngine, sendsEveryBlockAsOneBinaryFrameInOrder) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    QByteArray sent;
    for (int index = 0; index < 100; ++index) {
        const QByteArray pcm = block(index, 100 + 2 * index);
        sent += pcm;
        EXPECT_FALSE(finish(session.engine->sendAudio(pcm)).error);
    }
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 100; }));
    EXPECT_EQ(session.service.audio(), sent);
    EXPECT_EQ(session.service.events(u"audio"_s)[7][u"frame"_s].toInt(), 114);
}

TEST(DeepgramDirectEngine, sendsBlocksUpTo16MebibytesAndBeyondAsOneMessage) {
    for (const qsizetype size : {16'777'216, 16'777'218}) {
        DeepgramSession session;
        finish(session.engine->connect(config));
        const QByteArray pcm = block(5, size);
        EXPECT_FALSE(finish(session.engine->sendAudio(pcm)).error);
        ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 1; }, 60s));
        EXPECT_TRUE(session.service.audio() == pcm);
    }
}

TEST(DeepgramDirectEngine, sendsSoundAndKeepAlivesBesideEachOther) {
    DeepgramSession session({u"--key"_s, u"SECRET"_s}, {.keepAlive = 1ms});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    QByteArray sent;
    for (int index = 0; index < 200; ++index) {
        const QByteArray pcm = block(index, 8192);
        sent += pcm;
        EXPECT_FALSE(finish(session.engine->sendAudio(pcm)).error);
    }
    ASSERT_TRUE(waitUntil([&] {
        return session.service.count(u"audio"_s) == 200 && session.service.count(u"text"_s) > 3;
    }));
    EXPECT_EQ(session.service.audio(), sent);
    EXPECT_EQ(session.service.count(u"misuse"_s), 0);
}

TEST(DeepgramDirectEngine, sendsNothingWhileNotConnected) {
    DeepgramSession session;
    EXPECT_FALSE(finish(session.engine->sendAudio(block(1))).error);
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    finish(session.engine->disconnect());
    EXPECT_FALSE(finish(session.engine->sendAudio(block(2))).error);
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(session.service.count(u"audio"_s), 0);
}

TEST(DeepgramDirectEngine, deliversFinalResultsOnly) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.send(uR"({"type":"Metadata","request_id":"r"})"_s);
    session.service.send(deepgramResult(u"Guten"_s, false));
    session.service.command({{u"sendBinary"_s, u"AAAA"_s}});
    session.service.send(u"not json"_s);
    session.service.send(deepgramResult(QString()));
    session.service.send(deepgramResult(u"Guten Tag. 😀"_s));
    session.service.send(deepgramResult(u"Zweitens"_s));
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 2; }));
    EXPECT_EQ(session.reports.results,
              (QStringList{u"Guten Tag. 😀|Guten Tag. 😀"_s, u"Zweitens|Zweitens"_s}));
    EXPECT_TRUE(session.engine->isConnected());
}

TEST(DeepgramDirectEngine, takesAMessageOf16Mebibytes) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.command({{u"sendLarge"_s, 16'777'216}});
    session.service.send(deepgramResult(u"danach"_s));
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }, 60s));
    EXPECT_TRUE(session.engine->isConnected());
}

TEST(DeepgramDirectEngine, endsAtAMessageBeyond16Mebibytes) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.command({{u"sendLarge"_s, 16'777'217}});
    ASSERT_TRUE(session.waitForEnd());
}

TEST(DeepgramDirectEngine, endsAtTextThatIsNotUtf8) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.command({{u"sendInvalidText"_s, true}});
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TEST(DeepgramDirectEngine, keepsAStreamWithoutSoundOpen) {
    DeepgramSession session({u"--idle"_s, u"5"_s}, {.keepAlive = 100ms});
    finish(session.engine->connect(config));
    // Longer than the service waits for a word.
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"text"_s) >= 60; }));
    EXPECT_EQ(session.service.count(u"closed"_s), 0);
    for (const QJsonObject& text : session.service.events(u"text"_s)) {
        EXPECT_EQ(text[u"data"_s].toString(), uR"({"type":"KeepAlive"})"_s);
    }
}

TEST(DeepgramDirectEngine, reportsARejectedKeyAsTheEndOfTheConnection) {
    DeepgramSession session({u"--key"_s, u"OTHER"_s});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.reports.statuses, (QStringList{u"connected: Deepgram connected (streaming)"_s,
                                                     u"error: Deepgram disconnected"_s}));
    EXPECT_FALSE(session.engine->isConnected());
    EXPECT_EQ(session.service.events(u"refused"_s).first()[u"status"_s].toInt(), 401);
    EXPECT_TRUE(session.log.containsStart(u"❌ Deepgram: "_s));
    EXPECT_TRUE(session.log.lines().filter(u"SECRET"_s).isEmpty());
}

TEST(DeepgramDirectEngine, keepsAKeyThatTheServiceQuotesOutOfTheLog) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.command({{u"close"_s, 1008}, {u"reason"_s, u"bad key SECRET"_s}});
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.log.lines().filter(u"bad key …"_s).size(), 1);
    EXPECT_TRUE(session.log.lines().filter(u"SECRET"_s).isEmpty());
}

TEST(DeepgramDirectEngine, refusesAKeyThatCannotStandInAHeader) {
    DeepgramSession session(QStringList{});
    CloudEngineConfig broken = config;
    broken.apiKey = u"SECRET\r\nX-Other: 1"_s;
    finish(session.engine->connect(broken));
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.service.count(u"open"_s), 0);
}

TEST(DeepgramDirectEngine, reportsOnceThatTheServiceHasGoneDuringAudio) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    finish(session.engine->sendAudio(block(1)));
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 1; }));
    session.service.command({{u"abort"_s, true}});
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_FALSE(finish(session.engine->sendAudio(block(2))).error);
    finish(session.engine->disconnect());
    test::drainEvents();
    EXPECT_EQ(session.reports.statuses.filter(u"error"_s).size(), 1);
    EXPECT_EQ(session.log.lines().filter(u"❌ Deepgram: "_s).size(), 1);
}

TEST(DeepgramDirectEngine, throwsWhenABlockCannotBeSentAnyMore) {
    DeepgramSession session({u"--mute"_s});
    finish(session.engine->connect(config));
    const auto sending = start(session.engine->sendAudio(block(1)));
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"taken"_s) == 1; }));
    EXPECT_FALSE(sending->done);
    session.service.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_TRUE(sending->error);
}

TEST(DeepgramDirectEngine, givesUpAServiceThatNeverAnswers) {
    DeepgramSession session({u"--mute"_s}, {.streamRequest = 50ms});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_TRUE(session.log.contains(u"❌ Deepgram: Zeitüberschreitung"_s));
}

TEST(DeepgramDirectEngine, givesUpAServiceThatTakesNothingMore) {
    DeepgramSession session({u"--key"_s, u"SECRET"_s}, {.streamStall = 3s});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.freeze();
    // More than the system's buffers hold.
    const auto sending = start(session.engine->sendAudio(block(1, 16'000'000)));
    ASSERT_TRUE(waitUntil([&] { return sending->done; }));
    EXPECT_EQ(sending->error, u"Zeitüberschreitung"_s);
    ASSERT_TRUE(session.waitForEnd());
}

TEST(DeepgramDirectEngine, saysFarewellAndGoesAway) {
    DeepgramSession session({u"--key"_s, u"SECRET"_s}, {.keepAlive = 1h});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    finish(session.engine->sendAudio(block(1)));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_FALSE(session.engine->isConnected());
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(session.service.count(u"audio"_s), 1);
    const auto texts = session.service.events(u"text"_s);
    ASSERT_EQ(texts.size(), 1);
    EXPECT_EQ(texts[0][u"data"_s].toString(), uR"({"type":"CloseStream"})"_s);
    const QJsonObject closed = session.service.events(u"closed"_s).first();
    EXPECT_EQ(closed[u"code"_s].toInt(), 1001);
    EXPECT_EQ(closed[u"reason"_s].toString(), QString());
}

TEST(DeepgramDirectEngine, reportsItsEndOnceAfterDisconnecting) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    finish(session.engine->disconnect());
    finish(session.engine->disconnect());
    ASSERT_TRUE(session.waitForEnd());
    test::drainEvents();
    EXPECT_EQ(session.reports.statuses, (QStringList{u"connected: Deepgram connected (streaming)"_s,
                                                     u"error: Deepgram disconnected"_s}));
    EXPECT_TRUE(session.log.lines().filter(u"❌"_s).isEmpty());
}

TEST(DeepgramDirectEngine, canBeDisconnectedWithoutAConnection) {
    DeepgramDirectEngine engine;
    EXPECT_FALSE(finish(engine.disconnect()).error);
}

TEST(DeepgramDirectEngine, disconnectsInTimeFromAServiceThatTakesNothingMore) {
    DeepgramSession session({u"--key"_s, u"SECRET"_s}, {.streamFarewell = 50ms});
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.freeze();
    const auto sending = start(session.engine->sendAudio(block(1, 16'000'000)));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_TRUE(sending->done);
    EXPECT_TRUE(sending->error);
}

TEST(DeepgramDirectEngine, endsSilentlyWhenReleasedDuringAReceive) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.engine.reset();
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(session.reports.statuses.size(), 1);
}

TEST(DeepgramDirectEngine, mayBeReleasedByItsOwnResult) {
    DeepgramSession session;
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    int results = 0;
    session.engine->onTranslation = [&](const QString&, const QString&) {
        ++results;
        session.engine.reset();
    };
    session.service.send(deepgramResult(u"eins"_s));
    session.service.send(deepgramResult(u"zwei"_s));
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(results, 1);
}

TEST(DeepgramDirectEngine, mayBeReleasedByItsOwnStatus) {
    DeepgramSession session;
    session.engine->onStatus = [&](const QString& status, const QString&) {
        if (status == u"error") {
            session.engine.reset();
        }
    };
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.command({{u"close"_s, 1011}});
    EXPECT_TRUE(waitUntil([&] { return !session.engine; }));
}

TEST(DeepgramDirectEngine, doesNotTrustACertificateOfNobody) {
    DeepgramSession session({u"--tls"_s}, {}, u"wss"_s);
    finish(session.engine->connect(config));
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.service.count(u"open"_s), 0);
    EXPECT_EQ(session.log.lines().filter(u"self-signed"_s).size(), 1);
}

TEST(DeepgramDirectEngine, speaksTlsToAServiceItTrusts) {
    DeepgramSession session({u"--tls"_s}, {.keepAlive = 1h}, u"wss"_s);
    const TrustedCertificate trusted(session.service.certificate());
    finish(session.engine->connect(config));
    EXPECT_FALSE(finish(session.engine->sendAudio(block(1))).error);
    EXPECT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 1; }));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    EXPECT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(session.service.events(u"text"_s).size(), 1);
}

TEST(DeepgramDirectEngine, goesThroughTwentySessionsInARow) {
    ServicePeer service(u"streaming_service.py"_s, {u"deepgram"_s});
    for (int round = 1; round <= 20; ++round) {
        DeepgramDirectEngine engine({{deepgramHost, service.url(u"ws"_s)}});
        EngineReports reports(engine);
        finish(engine.connect(config));
        finish(engine.sendAudio(block(round)));
        ASSERT_TRUE(waitUntil([&] { return service.count(u"audio"_s) == round; }));
        service.send(deepgramResult(u"Satz"_s));
        ASSERT_TRUE(waitUntil([&] { return reports.results.size() == 1; }));
        finish(engine.disconnect());
        ASSERT_TRUE(waitUntil([&] { return service.count(u"closed"_s) == round; }));
    }
}

} // namespace
} // namespace orv
