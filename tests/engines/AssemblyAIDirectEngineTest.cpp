#include "AssemblyAIDirectEngine.h"

#include "StreamingSession.h"

#include <QJsonArray>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

QString assemblyaiResult(const QString& text) {
    return uR"({"message_type":"FinalTranscript","text":"%1","confidence":0.9,"words":[]})"_s.arg(
        text);
}

struct AssemblyAISession : StreamingSession<AssemblyAIDirectEngine> {
    explicit AssemblyAISession(const QStringList& arguments = {u"--key"_s, u"SECRET"_s},
                               EngineTimings timings = {})
        : StreamingSession(u"assemblyai"_s, arguments, timings) {}
};

TEST(AssemblyAIDirectEngine, isWhatItSays) {
    const AssemblyAIDirectEngine engine;
    EXPECT_EQ(engine.id(), u"assemblyai"_s);
    EXPECT_TRUE(engine.isStreaming());
    EXPECT_FALSE(engine.supportsTranslation());
}

TEST(AssemblyAIDirectEngine, wantsAKey) {
    AssemblyAIDirectEngine engine;
    EngineReports reports(engine);
    const auto outcome = finish(engine.connect({}));
    EXPECT_EQ(outcome.error, u"AssemblyAI API Key fehlt"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::MissingApiKey);
    EXPECT_TRUE(reports.statuses.isEmpty());
}

TEST(AssemblyAIDirectEngine, connectsWithPathQueryAndBareKey) {
    AssemblyAISession session;
    EXPECT_FALSE(finish(session.engine->connect(config)).error);
    EXPECT_EQ(session.reports.statuses,
              QStringList(u"connected: AssemblyAI connected (streaming)"_s));
    EXPECT_TRUE(session.log.contains(u"✓ AssemblyAI Session: session-1"_s));
    ASSERT_TRUE(session.waitForOpen());
    const QJsonObject open = session.service.events(u"open"_s).first();
    EXPECT_EQ(open[u"path"_s].toString(), u"/v2/realtime/ws?sample_rate=48000"_s);
    EXPECT_EQ(open[u"authorization"_s].toString(), u"SECRET"_s);
}

TEST(AssemblyAIDirectEngine, waitsForTheFirstMessage) {
    AssemblyAISession session({u"--wait"_s});
    const auto connecting = start(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    test::drainEvents();
    EXPECT_FALSE(connecting->done);
    EXPECT_FALSE(finish(session.engine->sendAudio(block(1))).error);
    session.service.command({{u"begin"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return connecting->done; }));
    EXPECT_TRUE(session.engine->isConnected());
    EXPECT_EQ(session.service.count(u"audio"_s), 0);
}

TEST(AssemblyAIDirectEngine, goesOnAfterAnotherFirstMessage) {
    AssemblyAISession session({u"--wait"_s});
    const auto connecting = start(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.service.send(uR"({"message_type":"PartialTranscript","text":"a"})"_s);
    session.service.send(assemblyaiResult(u"Satz."_s));
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }));
    EXPECT_FALSE(connecting->error);
    EXPECT_FALSE(session.log.containsStart(u"✓ AssemblyAI Session"_s));
}

TEST(AssemblyAIDirectEngine, goesOnWithoutAnyFirstMessage) {
    AssemblyAISession session({u"--wait"_s}, {.streamRequest = 5s});
    EXPECT_FALSE(finish(session.engine->connect(config)).error);
    EXPECT_TRUE(session.engine->isConnected());
    EXPECT_FALSE(finish(session.engine->sendAudio(block(1))).error);
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 1; }));
    session.service.send(assemblyaiResult(u"Satz."_s));
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }));
}

TEST(AssemblyAIDirectEngine, reportsARefusedKeyAfterConnecting) {
    AssemblyAISession session({u"--key"_s, u"OTHER"_s});
    EXPECT_FALSE(finish(session.engine->connect(config)).error);
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.reports.statuses,
              (QStringList{u"connected: AssemblyAI connected (streaming)"_s,
                           u"error: AssemblyAI disconnected"_s}));
    EXPECT_TRUE(session.log.lines().filter(u"SECRET"_s).isEmpty());
}

TEST(AssemblyAIDirectEngine, sendsAudioAsBase64InJson) {
    AssemblyAISession session;
    finish(session.engine->connect(config));
    QByteArray sent;
    for (int index = 0; index < 50; ++index) {
        const QByteArray pcm = block(index, 900 + 2 * index);
        sent += pcm;
        EXPECT_FALSE(finish(session.engine->sendAudio(pcm)).error);
    }
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == 50; }));
    EXPECT_EQ(session.service.audio(), sent);
    EXPECT_EQ(session.service.count(u"misuse"_s), 0);
    const QJsonObject first = session.service.events(u"audio"_s).first();
    EXPECT_EQ(first[u"frame"_s].toInt(), 1200 + 17);
    EXPECT_EQ(first[u"members"_s].toInt(), 1);
}

TEST(AssemblyAIDirectEngine, deliversFinalTranscriptsOnly) {
    AssemblyAISession session;
    finish(session.engine->connect(config));
    session.service.send(uR"({"message_type":"PartialTranscript","text":"Gu"})"_s);
    session.service.send(assemblyaiResult(QString()));
    session.service.command({{u"sendBinary"_s, u"AAAA"_s}});
    session.service.send(uR"({"error":"Bad"})"_s);
    session.service.send(assemblyaiResult(u"Guten Tag."_s));
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }));
    EXPECT_EQ(session.reports.results.first(), u"Guten Tag.|Guten Tag."_s);
}

TEST(AssemblyAIDirectEngine, terminatesTheSessionAndGoesAway) {
    AssemblyAISession session;
    finish(session.engine->connect(config));
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    ASSERT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    const auto texts = session.service.events(u"text"_s);
    ASSERT_EQ(texts.size(), 1);
    EXPECT_EQ(texts[0][u"data"_s].toString(), uR"({"terminate_session":true})"_s);
    EXPECT_EQ(session.service.events(u"closed"_s).first()[u"code"_s].toInt(), 1001);
    ASSERT_TRUE(session.waitForEnd());
    EXPECT_EQ(session.reports.statuses.filter(u"error"_s),
              QStringList(u"error: AssemblyAI disconnected"_s));
}

TEST(AssemblyAIDirectEngine, canBeDisconnectedWhileConnecting) {
    AssemblyAISession session({u"--wait"_s});
    const auto connecting = start(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    EXPECT_FALSE(finish(session.engine->disconnect()).error);
    ASSERT_TRUE(waitUntil([&] { return connecting->done; }));
    EXPECT_FALSE(session.engine->isConnected());
    EXPECT_TRUE(session.reports.statuses.isEmpty());
    EXPECT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
}

TEST(AssemblyAIDirectEngine, endsSilentlyWhenReleasedWhileConnecting) {
    AssemblyAISession session({u"--wait"_s});
    const auto connecting = start(session.engine->connect(config));
    ASSERT_TRUE(session.waitForOpen());
    session.engine.reset();
    EXPECT_TRUE(connecting->done);
    EXPECT_FALSE(connecting->error);
    EXPECT_TRUE(session.reports.statuses.isEmpty());
}

} // namespace
} // namespace orv
