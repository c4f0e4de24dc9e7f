// Azure and Google as they are today, refusals included.

#include "AzureDirectEngine.h"
#include "AzureMessages.h"
#include "GoogleCloudDirectEngine.h"
#include "GoogleCloudMessages.h"
#include "PresentServices.h"
#include "TranslationMessages.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

using Kind = ServiceFault::Kind;

const QString key = u"SECRET"_s;

/// A stand-in by its name, whose key is `key`.
struct Rest : ServicePeer {
    explicit Rest(const QString& name, const QStringList& arguments = {})
        : ServicePeer(u"cloud_service.py"_s,
                      QStringList{u"tests.cloud_rest."_s + name, u"--key"_s, key} + arguments) {}

    QString address() const { return url(u"http"_s); }
};

CloudEngineConfig between(const QString& source, const QString& target) {
    return {.sourceLang = source,
            .targetLang = target,
            .apiKey = key,
            .region = u"westeurope"_s,
            .sampleRate = presentRate};
}

struct AzureSession {
    explicit AzureSession(const QStringList& speechArguments = {},
                          const QStringList& translatorArguments = {})
        : speech(u"azure_speech"_s, QStringList{u"--region"_s, u"westeurope"_s} + speechArguments)
        , translator(u"azure_translator"_s, translatorArguments)
        , google(u"google_translate"_s)
        , engine(ServiceEndpoints{{azureRecognitionHost, speech.address()},
                                  {azureTranslationHost, speech.address()},
                                  {azureTranslatorHost, translator.address()},
                                  {translationHost, google.address()}})
        , reports(engine) {}

    void connect(const QString& source, const QString& target) {
        EXPECT_FALSE(finish(engine.connect(between(source, target))).error);
    }

    Outcome say(int count = 1) { return finish(engine.sendAudio(utterances(count))); }

    LogCapture log;
    Rest speech;
    Rest translator;
    Rest google;
    AzureDirectEngine engine;
    EngineReports reports;
};

TEST(AzurePresent, recognisesAndTranslatesInTwoSteps) {
    AzureSession session({}, {u"--key-kind"_s, u"multi"_s, u"--region"_s, u"westeurope"_s});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(session.say().error);
    EXPECT_FALSE(session.say().error);
    EXPECT_EQ(session.reports.results.size(), 2);
    EXPECT_TRUE(session.reports.results.first().contains(u"|de: "_s))
        << qPrintable(session.reports.results.first());
    EXPECT_TRUE(session.reports.faults.isEmpty());
    // Which way works is found out once.
    EXPECT_EQ(session.speech.count(u"request"_s), 3);
    EXPECT_EQ(session.speech.count(u"defect"_s), 0);
}

TEST(AzurePresent, translatesByGoogleWhereItsOwnKeyDoesNot) {
    AzureSession session({}, {u"--key-kind"_s, u"speech-only"_s});
    session.engine.setTranslationKey(key);
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(session.say().error);
    EXPECT_FALSE(session.say().error);
    ASSERT_EQ(session.reports.results.size(), 2);
    EXPECT_TRUE(session.reports.results.last().contains(u"|de: "_s));
    EXPECT_TRUE(session.reports.faults.isEmpty());
    EXPECT_EQ(session.translator.count(u"request"_s), 1) << "it is not asked again";
}

TEST(AzurePresent, showsTheTextAndSaysThatNobodyTranslates) {
    AzureSession session({}, {u"--key-kind"_s, u"speech-only"_s});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(session.say().error);
    ASSERT_EQ(session.reports.results.size(), 1);
    const QStringList pair = session.reports.results.first().split(u'|');
    EXPECT_EQ(pair[0], pair[1]);
    ASSERT_EQ(session.reports.faults.size(), 1);
    EXPECT_EQ(session.reports.faults.first().kind, Kind::NotTranslated);
}

TEST(AzurePresent, onlyRecognisesForTheSameLanguage) {
    AzureSession session;
    session.connect(u"cs"_s, u"cs"_s);
    EXPECT_FALSE(session.say().error);
    EXPECT_EQ(session.reports.results.size(), 1);
    EXPECT_EQ(session.translator.count(u"request"_s), 0);
}

TEST(AzurePresent, saysBeforeAnyNetworkThatItLacksALanguage) {
    AzureSession session;
    EXPECT_EQ(finish(session.engine.connect(between(u"br"_s, u"de"_s))).engineError,
              CloudEngineError::Kind::ConnectionFailed);
}

struct FaultCase {
    const char16_t* fault;
    Kind kind;
};

TEST(AzurePresent, whatItRefusesIsSaid) {
    const FaultCase faults[] = {
        {u"invalid-key", Kind::KeyRefused},     {u"wrong-region", Kind::KeyRefused},
        {u"quota", Kind::QuotaUsedUp},          {u"too-many", Kind::TooManyRequests},
        {u"server-error", Kind::ServiceFailed}, {u"unavailable", Kind::ServiceFailed},
        {u"html-502", Kind::ServiceFailed},     {u"redirect", Kind::Unreadable}};
    for (const auto& [fault, kind] : faults) {
        SCOPED_TRACE(QString::fromUtf16(fault).toStdString());
        AzureSession session({u"--fault"_s, QString::fromUtf16(fault)});
        session.connect(u"en"_s, u"en"_s);
        EXPECT_FALSE(session.say().error);
        ASSERT_EQ(session.reports.faults.size(), 1);
        EXPECT_EQ(session.reports.faults.first().kind, kind);
        EXPECT_TRUE(session.reports.results.isEmpty());
        EXPECT_FALSE(session.reports.faults.first().said.contains(key));
    }
}

TEST(AzurePresent, whatIsNotHeardIsNoFault) {
    for (const QString& fault : {u"no-match"_s, u"initial-silence"_s, u"babble"_s}) {
        SCOPED_TRACE(fault.toStdString());
        AzureSession session({u"--fault"_s, fault});
        session.connect(u"en"_s, u"en"_s);
        EXPECT_FALSE(session.say().error);
        EXPECT_TRUE(session.reports.results.isEmpty());
        EXPECT_TRUE(session.reports.faults.isEmpty());
    }
}

struct GoogleSession {
    explicit GoogleSession(const QStringList& speechArguments = {},
                           const QStringList& translateArguments = {})
        : speech(u"google_speech"_s, speechArguments)
        , translate(u"google_translate"_s, translateArguments)
        , engine(ServiceEndpoints{{googleRecognitionHost, speech.address()},
                                  {translationHost, translate.address()}})
        , reports(engine) {}

    void connect(const QString& source, const QString& target) {
        EXPECT_FALSE(finish(engine.connect(between(source, target))).error);
    }

    Outcome say(int count = 1) { return finish(engine.sendAudio(utterances(count))); }

    LogCapture log;
    Rest speech;
    Rest translate;
    GoogleCloudDirectEngine engine;
    EngineReports reports;
};

TEST(GooglePresent, recognisesAndTranslates) {
    GoogleSession session;
    session.connect(u"cs"_s, u"de"_s);
    EXPECT_FALSE(session.say().error);
    EXPECT_FALSE(session.say().error);
    EXPECT_EQ(session.reports.results.size(), 2);
    EXPECT_TRUE(session.reports.faults.isEmpty());
    EXPECT_EQ(session.speech.count(u"defect"_s), 0);
}

TEST(GooglePresent, whatItRefusesIsSaid) {
    const FaultCase faults[] = {{u"invalid-key", Kind::KeyRefused},
                                {u"credentials-missing", Kind::KeyRefused},
                                {u"service-disabled", Kind::NotAllowed},
                                {u"key-blocked", Kind::NotAllowed},
                                {u"quota", Kind::QuotaUsedUp},
                                {u"unavailable", Kind::ServiceFailed},
                                {u"deadline", Kind::TimedOut}};
    for (const auto& [fault, kind] : faults) {
        SCOPED_TRACE(QString::fromUtf16(fault).toStdString());
        GoogleSession session({u"--fault"_s, QString::fromUtf16(fault)});
        session.connect(u"en"_s, u"de"_s);
        EXPECT_FALSE(session.say().error);
        ASSERT_EQ(session.reports.faults.size(), 1);
        EXPECT_EQ(session.reports.faults.first().kind, kind)
            << qPrintable(session.reports.faults.first().said);
        EXPECT_TRUE(session.reports.results.isEmpty());
    }
}

TEST(GooglePresent, aTranslationThatIsRefusedKeepsTheTextAndIsSaid) {
    GoogleSession session({}, {u"--fault"_s, u"quota"_s});
    session.connect(u"en"_s, u"de"_s);
    EXPECT_FALSE(session.say().error);
    EXPECT_EQ(session.reports.results.size(), 1);
    ASSERT_EQ(session.reports.faults.size(), 1);
    EXPECT_EQ(session.reports.faults.first().kind, Kind::QuotaUsedUp);
}

} // namespace
} // namespace orv::test
