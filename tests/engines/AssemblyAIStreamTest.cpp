// AssemblyAI as it is today: version 2 is switched off, version 3 has taken its place.

#include "AssemblyAIDirectEngine.h"
#include "AssemblyAIMessages.h"
#include "PresentServices.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

using Kind = ServiceFault::Kind;
using Memory = AssemblyAIDirectEngine::Memory;

struct Stream {
    explicit Stream(const QStringList& arguments = {},
                    std::shared_ptr<Memory> memory = std::make_shared<Memory>())
        : service(u"cloud_services.assemblyai"_s, arguments)
        , engine(std::make_unique<AssemblyAIDirectEngine>(
              ServiceEndpoints{{assemblyaiHost, service.url(u"ws"_s)},
                               {assemblyaiStreamingHost, service.url(u"ws"_s)}},
              EngineTimings(), std::move(memory)))
        , reports(*engine) {}

    void connect(const QString& language = u"en"_s, const QString& with = presentKey) {
        EXPECT_FALSE(finish(engine->connect(spoken(language, with))).error);
    }

    bool waitForResults(qsizetype count) {
        return waitUntil([&] { return reports.results.size() >= count; });
    }

    bool waitForFault() {
        return waitUntil([&] { return !reports.faults.isEmpty(); });
    }

    QStringList paths() {
        QStringList found;
        for (const QJsonObject& connection : service.events(u"connection"_s)) {
            found.append(connection[u"path"_s].toString());
        }
        return found;
    }

    void expectNoMisuse() {
        EXPECT_EQ(service.count(u"misuse"_s), 0);
        EXPECT_EQ(service.count(u"too_fast"_s), 0);
        EXPECT_EQ(service.count(u"abandoned"_s), 0);
        EXPECT_EQ(service.count(u"defect"_s), 0);
    }

    LogCapture log;
    PresentService service;
    std::unique_ptr<AssemblyAIDirectEngine> engine;
    EngineReports reports;
};

TEST(AssemblyAIStream, servesWhereVersion2IsSwitchedOff) {
    for (const QString& old : {u"dead"_s, u"refused"_s, u"missing"_s}) {
        SCOPED_TRACE(old.toStdString());
        Stream session({u"--old"_s, old});
        session.connect();
        EXPECT_TRUE(session.log.containsStart(u"✓ AssemblyAI Session: "_s));
        EXPECT_EQ(session.reports.statuses,
                  QStringList(u"connected: AssemblyAI connected (streaming)"_s));
        speak(*session.engine, utterances(1));
        EXPECT_TRUE(session.waitForResults(1));
        EXPECT_EQ(session.reports.results, said({u"one"_s}));
        EXPECT_EQ(session.paths(), (QStringList{u"/v2/realtime/ws"_s, u"/v3/ws"_s}));
        finish(session.engine->disconnect());
        session.expectNoMisuse();
    }
}

TEST(AssemblyAIStream, servesWhereVersion2SaysNothing) {
    Stream session({u"--old"_s, u"silent"_s});
    session.connect();
    speak(*session.engine, utterances(1));
    EXPECT_TRUE(session.waitForResults(1));
}

TEST(AssemblyAIStream, isNotAskedForWhereVersion2IsServed) {
    Stream session({u"--old"_s, u"alive"_s});
    session.connect();
    speak(*session.engine, utterances(1));
    EXPECT_TRUE(session.waitForResults(1));
    EXPECT_EQ(session.paths(), QStringList(u"/v2/realtime/ws"_s));
}

TEST(AssemblyAIStream, isRememberedByTheNextSession) {
    const auto memory = std::make_shared<Memory>();
    {
        Stream first({}, memory);
        first.connect();
    }
    EXPECT_TRUE(memory->isVersion3);
    Stream second({}, memory);
    second.connect();
    EXPECT_EQ(second.paths(), QStringList(u"/v3/ws"_s));
}

TEST(AssemblyAIStream, bringsEveryTurnOnceInEveryModel) {
    for (const QString& language : {u"en"_s, u"de"_s, u"auto"_s, u"ta"_s}) {
        SCOPED_TRACE(language.toStdString());
        Stream session;
        session.connect(language);
        speak(*session.engine, utterances(3));
        EXPECT_TRUE(session.waitForResults(3));
        finish(session.engine->disconnect());
        EXPECT_EQ(session.reports.results.size(), 3);
        session.expectNoMisuse();
    }
}

TEST(AssemblyAIStream, aTagForSilenceIsNoLine) {
    Stream session({u"--fault"_s, u"tags"_s});
    session.connect(u"ta"_s);
    speak(*session.engine, quiet(6s) + utterances(1));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results.size(), 1);
    session.expectNoMisuse();
}

TEST(AssemblyAIStream, bringsTheLastWordsAtTheEnd) {
    Stream session;
    session.connect();
    speak(*session.engine, voice(410ms));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results, said({u"one"_s}));
    EXPECT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 2; }));
    session.expectNoMisuse();
}

TEST(AssemblyAIStream, whatGatheredBeforeTheConnectionGoesAtThePaceOfSpeech) {
    Stream session;
    session.connect();
    finish(session.engine->sendAudio(utterances(4)));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results.size(), 4);
    session.expectNoMisuse();
}

TEST(AssemblyAIStream, aKeyThatIsRefusedIsSaidSo) {
    for (const QString& fault : {u"key"_s, u"key-http"_s, u"key-http-403"_s}) {
        SCOPED_TRACE(fault.toStdString());
        Stream session({u"--fault"_s, fault});
        session.connect();
        ASSERT_TRUE(session.waitForFault());
        EXPECT_EQ(session.reports.faults.first().kind,
                  fault == u"key-http-403" ? Kind::NotAllowed : Kind::KeyRefused);
        EXPECT_TRUE(waitUntil([&] { return session.reports.statuses.size() == 2; }));
        EXPECT_EQ(session.reports.statuses.last(), u"error: AssemblyAI disconnected"_s);
        EXPECT_TRUE(session.log.lines().filter(presentKey).isEmpty());
    }
}

TEST(AssemblyAIStream, whatEndsASessionIsSaid) {
    expectFaults({{u"credit", Kind::NoCredit},
                  {u"too-many", Kind::TooManyRequests},
                  {u"model", Kind::RequestRefused},
                  {u"internal", Kind::ServiceFailed},
                  {u"expired", Kind::ServiceFailed},
                  {u"close-mid", Kind::ServiceFailed},
                  {u"unavailable", Kind::ServiceFailed},
                  {u"old-4002", Kind::NoCredit},
                  {u"old-4001", Kind::KeyRefused},
                  {u"old-4102", Kind::TooManyRequests}},
                 faultsWhileSpeaking<Stream>);
    expectFaults(brokenStreams, faultsWhileSpeaking<Stream>);
}

TEST(AssemblyAIStream, aTurnWhoseSecondFormIsCutOffIsSaidAsItWasHeard) {
    Stream session({u"--fault"_s, u"no-twin"_s});
    session.connect();
    speak(*session.engine, utterances(1));
    EXPECT_TRUE(session.waitForFault());
    EXPECT_EQ(session.reports.faults.first().kind, Kind::ServiceFailed);
    EXPECT_EQ(session.reports.results, QStringList(u"sentence number one|sentence number one"_s));
}

TEST(AssemblyAIStream, whatIsNotUnderstoodIsSkipped) {
    for (const QString& fault : {u"unknown-type"_s, u"binary-down"_s, u"garbage-text"_s,
                                 u"wrong-shape"_s, u"warning"_s, u"formatted-flag"_s}) {
        SCOPED_TRACE(fault.toStdString());
        Stream session({u"--fault"_s, fault});
        session.connect();
        speak(*session.engine, utterances(2));
        finish(session.engine->disconnect());
        EXPECT_EQ(session.reports.results.size(), 2);
        EXPECT_TRUE(session.reports.faults.isEmpty())
            << session.reports.faults.first().said.toStdString();
    }
}

} // namespace
} // namespace orv::test
