// Deepgram as it is today, refusals included.

#include "DeepgramDirectEngine.h"
#include "DeepgramMessages.h"
#include "PresentServices.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

using Kind = ServiceFault::Kind;

struct Stream {
    explicit Stream(const QStringList& arguments = {})
        : service(u"cloud_services.deepgram"_s, QStringList{u"--burst"_s, u"inf"_s} + arguments)
        , engine(std::make_unique<DeepgramDirectEngine>(
              ServiceEndpoints{{deepgramHost, service.url(u"ws"_s)}}))
        , reports(*engine) {}

    Outcome connect(const QString& language = u"en"_s, const QString& with = presentKey) {
        return finish(engine->connect(spoken(language, with)));
    }

    bool waitForFault() {
        return waitUntil([&] { return !reports.faults.isEmpty(); });
    }

    LogCapture log;
    PresentService service;
    std::unique_ptr<DeepgramDirectEngine> engine;
    EngineReports reports;
};

TEST(DeepgramPresent, bringsEveryUtteranceOnce) {
    Stream session;
    session.connect();
    speak(*session.engine, utterances(5));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results.size(), 5);
    EXPECT_EQ(session.reports.results,
              said({u"one"_s, u"two"_s, u"three"_s, u"four"_s, u"five"_s}));
    EXPECT_TRUE(waitUntil([&] { return session.service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(session.service.count(u"misuse"_s), 0);
    EXPECT_EQ(session.service.count(u"defect"_s), 0);
    EXPECT_TRUE(session.reports.faults.isEmpty());
}

TEST(DeepgramPresent, bringsTheLastWordsAtTheEnd) {
    Stream session;
    session.connect();
    speak(*session.engine, voice(410ms));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results.size(), 1);
}

TEST(DeepgramPresent, takesALanguageWithTheModelThatHasIt) {
    const struct {
        const char16_t* language;
        const char16_t* model;
        const char16_t* name;
    } cases[] = {{u"de", u"nova-2", u"de"},     {u"zh", u"nova-2", u"zh"},
                 {u"yue", u"nova-2", u"zh-HK"}, {u"hr", u"nova-3", u"hr"},
                 {u"ar", u"nova-3", u"multi"},  {u"auto", u"nova-3", u"multi"}};

    for (const auto& [language, model, name] : cases) {
        SCOPED_TRACE(QString::fromUtf16(language).toStdString());
        Stream session;
        session.connect(QString::fromUtf16(language));
        speak(*session.engine, utterances(1));
        finish(session.engine->disconnect());
        EXPECT_EQ(session.reports.results.size(), 1);
        const QString query = QString::fromUtf8(
            QJsonDocument(session.service.events(u"connection"_s).first()).toJson());
        EXPECT_TRUE(query.contains(u'"' + QString::fromUtf16(model) + u'"')) << qPrintable(query);
        EXPECT_TRUE(query.contains(u'"' + QString::fromUtf16(name) + u'"')) << qPrintable(query);
        EXPECT_EQ(session.service.count(u"misuse"_s), 0);
    }
}

TEST(DeepgramPresent, saysBeforeAnyNetworkThatItLacksALanguage) {
    Stream session;
    const Outcome outcome = session.connect(u"haw"_s);
    EXPECT_EQ(outcome.engineError, CloudEngineError::Kind::ConnectionFailed);
    EXPECT_EQ(session.service.count(u"connection"_s), 0);
}

TEST(DeepgramPresent, whatItRefusesIsSaidInItsOwnWords) {
    const struct {
        const char16_t* fault;
        Kind kind;
        const char16_t* said;
    } faults[] = {{u"key", Kind::KeyRefused, u"Invalid credentials."},
                  {u"permission", Kind::NotAllowed, u"Project does not have access"},
                  {u"permission-401", Kind::NotAllowed, u"Project does not have access"},
                  {u"model", Kind::LanguageUnknown, u"No such model/language/tier"},
                  {u"credit", Kind::NoCredit, u""},
                  {u"too-many", Kind::TooManyRequests, u"Too many requests"},
                  {u"unavailable", Kind::ServiceFailed, u""}};

    for (const auto& [fault, kind, said] : faults) {
        SCOPED_TRACE(QString::fromUtf16(fault).toStdString());
        Stream session({u"--fault"_s, QString::fromUtf16(fault)});
        EXPECT_FALSE(session.connect().error);
        ASSERT_TRUE(session.waitForFault());
        EXPECT_EQ(session.reports.faults.size(), 1);
        EXPECT_EQ(session.reports.faults.first().kind, kind);
        EXPECT_TRUE(session.reports.faults.first().said.contains(QString::fromUtf16(said)))
            << qPrintable(session.reports.faults.first().said);
        EXPECT_TRUE(waitUntil([&] { return session.reports.statuses.size() == 2; }));
        EXPECT_TRUE(session.log.lines().filter(presentKey).isEmpty());
    }
}

TEST(DeepgramPresent, whatEndsAStreamIsSaid) {
    expectFaults({{u"internal", Kind::ServiceFailed},
                  {u"close-mid", Kind::ServiceFailed},
                  {u"undecodable", Kind::RequestRefused}},
                 faultsWhileSpeaking<Stream>);
    expectFaults(brokenStreams, faultsWhileSpeaking<Stream>);
}

TEST(DeepgramPresent, whatIsNotUnderstoodIsSkipped) {
    for (const QString& fault :
         {u"unknown-type"_s, u"binary-down"_s, u"garbage-text"_s, u"wrong-shape"_s,
          u"finalize-unanswered"_s, u"no-speech-final"_s}) {
        SCOPED_TRACE(fault.toStdString());
        Stream session({u"--fault"_s, fault});
        session.connect();
        speak(*session.engine, utterances(2));
        finish(session.engine->disconnect());
        EXPECT_EQ(session.reports.results.size(), 2);
        EXPECT_TRUE(session.reports.faults.isEmpty());
    }
}

TEST(DeepgramPresent, neverSendsAnEmptyFrame) {
    Stream session;
    session.connect();
    finish(session.engine->sendAudio({}));
    speak(*session.engine, utterances(1));
    finish(session.engine->disconnect());
    EXPECT_EQ(session.reports.results.size(), 1);
}

} // namespace
} // namespace orv::test
