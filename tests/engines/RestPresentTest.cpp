// Azure and Google as they are today, refusals included.

#include "AzureDirectEngine.h"
#include "AzureMessages.h"
#include "GoogleCloudDirectEngine.h"
#include "GoogleCloudMessages.h"
#include "PresentServices.h"
#include "TranslationClient.h"
#include "TranslationMessages.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

using Kind = ServiceFault::Kind;

/// A stand-in by its name.
struct Rest : PresentService {
    explicit Rest(const QString& name, const QStringList& arguments = {})
        : PresentService(u"cloud_rest."_s + name, arguments) {}

    QString address() const { return url(u"http"_s); }
};

CloudEngineConfig between(const QString& source, const QString& target) {
    return {.sourceLang = source,
            .targetLang = target,
            .apiKey = presentKey,
            .region = u"westeurope"_s,
            .sampleRate = presentRate};
}

/// An engine that was told where its services are.
template <typename Engine>
struct Session {
    Session(ServiceEndpoints endpoints, EngineTimings timings)
        : engine(std::move(endpoints), timings)
        , reports(engine) {}

    void connect(const QString& source, const QString& target) {
        EXPECT_FALSE(finish(engine.connect(between(source, target))).error);
    }

    Outcome say(int count = 1) { return finish(engine.sendAudio(utterances(count))); }

    /// What is told of one thing said, however it is told.
    QList<ServiceFault> faultsOf(const QString& source, const QString& target) {
        connect(source, target);
        const Outcome outcome = say();
        QList<ServiceFault> told = reports.faults;
        if (outcome.fault) {
            told.append(*outcome.fault);
        }
        return told;
    }

    LogCapture log;
    Engine engine;
    EngineReports reports;
};

struct AzureServices {
    AzureServices(const QStringList& speechArguments, const QStringList& translatorArguments)
        : speech(u"azure_speech"_s, QStringList{u"--region"_s, u"westeurope"_s} + speechArguments)
        , translator(u"azure_translator"_s, translatorArguments)
        , google(u"google_translate"_s) {}

    Rest speech;
    Rest translator;
    Rest google;
};

struct AzureSession : AzureServices, Session<AzureDirectEngine> {
    explicit AzureSession(const QStringList& speechArguments = {},
                          const QStringList& translatorArguments = {}, EngineTimings timings = {})
        : AzureServices(speechArguments, translatorArguments)
        , Session({{azureRecognitionHost, speech.address()},
                   {azureTranslationHost, speech.address()},
                   {azureTranslatorHost, translator.address()},
                   {translationHost, google.address()}},
                  timings) {}
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
    session.engine.setTranslationKey(presentKey);
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

/// What any of them may meet on the way.
constexpr std::initializer_list<FaultCase> onTheWay = {
    {u"closed", Kind::NetworkFailed}, {u"cut", Kind::NetworkFailed},
    {u"reset", Kind::NetworkFailed},  {u"html-200", Kind::Unreadable},
    {u"empty", Kind::Unreadable},     {u"broken-json", Kind::Unreadable},
    {u"redirect", Kind::Unreadable},  {u"html-502", Kind::ServiceFailed}};

/// No byte comes. Only these are asked in a hurry: whoever answers gets the time it needs.
constexpr std::initializer_list<FaultCase> unanswered = {{u"stall", Kind::TimedOut},
                                                         {u"slow", Kind::TimedOut}};
constexpr EngineTimings hasty{.recognition = 500ms, .translation = 500ms};

TEST(AzurePresent, whatItRefusesIsSaid) {
    expectFaults({{u"invalid-key", Kind::KeyRefused},
                  {u"wrong-region", Kind::KeyRefused},
                  {u"quota", Kind::QuotaUsedUp},
                  {u"region-rule", Kind::NotAllowed},
                  {u"bad-request", Kind::RequestRefused},
                  {u"too-many", Kind::TooManyRequests},
                  {u"server-error", Kind::ServiceFailed},
                  {u"unavailable", Kind::ServiceFailed},
                  {u"error", Kind::ServiceFailed},
                  {u"status-too-many", Kind::TooManyRequests},
                  {u"status-bad-request", Kind::RequestRefused},
                  {u"status-forbidden", Kind::NotAllowed}},
                 [](const QString& fault) {
                     AzureSession session({u"--fault"_s, fault});
                     const auto told = session.faultsOf(u"en"_s, u"en"_s);
                     EXPECT_TRUE(session.reports.results.isEmpty());
                     return told;
                 });
}

TEST(AzurePresent, whatHappensOnTheWayIsSaid) {
    const auto meet = [](const QString& fault, EngineTimings timings) {
        return AzureSession({u"--fault"_s, fault}, {}, timings).faultsOf(u"en"_s, u"en"_s);
    };
    expectFaults(onTheWay, [&](const QString& fault) { return meet(fault, {}); });
    expectFaults(unanswered, [&](const QString& fault) { return meet(fault, hasty); });
}

TEST(AzurePresent, whyItsTranslatorDoesNotTranslateIsSaidBesideTheText) {
    const auto meet = [](const QString& fault, EngineTimings timings) {
        AzureSession session({}, {u"--fault"_s, fault}, timings);
        const auto told = session.faultsOf(u"en"_s, u"de"_s);
        EXPECT_EQ(session.reports.results.size(), 1);
        EXPECT_TRUE(!told.isEmpty() && isOfTranslation(told.first()));
        return told;
    };
    expectFaults({{u"invalid-key", Kind::NotTranslated},
                  {u"speech-only-key", Kind::NotTranslated},
                  {u"quota", Kind::QuotaUsedUp},
                  {u"too-many", Kind::TooManyRequests},
                  {u"language-400036", Kind::LanguageUnknown},
                  {u"too-long", Kind::RequestRefused},
                  {u"server-error", Kind::ServiceFailed},
                  {u"closed", Kind::NetworkFailed},
                  {u"html-200", Kind::Unreadable}},
                 [&](const QString& fault) { return meet(fault, {}); });
    expectFaults(unanswered,
                 [&](const QString& fault) { return meet(fault, {.translation = 500ms}); });
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

struct GoogleServices {
    GoogleServices(const QStringList& speechArguments, const QStringList& translateArguments)
        : speech(u"google_speech"_s, speechArguments)
        , translate(u"google_translate"_s, translateArguments) {}

    Rest speech;
    Rest translate;
};

struct GoogleSession : GoogleServices, Session<GoogleCloudDirectEngine> {
    explicit GoogleSession(const QStringList& speechArguments = {},
                           const QStringList& translateArguments = {}, EngineTimings timings = {})
        : GoogleServices(speechArguments, translateArguments)
        , Session(
              {{googleRecognitionHost, speech.address()}, {translationHost, translate.address()}},
              timings) {}
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
    expectFaults({{u"invalid-key", Kind::KeyRefused},
                  {u"credentials-missing", Kind::KeyRefused},
                  {u"service-disabled", Kind::NotAllowed},
                  {u"key-blocked", Kind::NotAllowed},
                  {u"bad-request", Kind::RequestRefused},
                  {u"quota", Kind::QuotaUsedUp},
                  {u"server-error", Kind::ServiceFailed},
                  {u"unavailable", Kind::ServiceFailed},
                  {u"deadline", Kind::TimedOut}},
                 [](const QString& fault) {
                     GoogleSession session({u"--fault"_s, fault});
                     const auto told = session.faultsOf(u"en"_s, u"de"_s);
                     EXPECT_TRUE(session.reports.results.isEmpty());
                     return told;
                 });
}

TEST(GooglePresent, whatHappensOnTheWayIsSaid) {
    const auto meet = [](const QString& fault, EngineTimings timings) {
        return GoogleSession({u"--fault"_s, fault}, {}, timings).faultsOf(u"en"_s, u"de"_s);
    };
    expectFaults(onTheWay, [&](const QString& fault) { return meet(fault, {}); });
    expectFaults(unanswered, [&](const QString& fault) { return meet(fault, hasty); });
}

TEST(GooglePresent, aTranslationThatIsRefusedKeepsTheTextAndIsSaid) {
    GoogleSession session({}, {u"--fault"_s, u"quota"_s});
    const auto told = session.faultsOf(u"en"_s, u"de"_s);
    EXPECT_EQ(session.reports.results.size(), 1);
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told.first().kind, Kind::QuotaUsedUp);
    EXPECT_EQ(told.first().translator, u"Google Translate"_s);
}

QCoro::Task<> translate(TranslationClient& client, bool& isOver) {
    co_await client.googleTranslateText(u"one"_s, u"de"_s, presentKey);
    isOver = true;
}

QList<ServiceFault> faultsOfTranslation(const QString& fault, std::chrono::milliseconds timeout) {
    Rest service(u"google_translate"_s, {u"--fault"_s, fault});
    TranslationClient client({{translationHost, service.address()}}, timeout);
    QList<ServiceFault> told;
    client.onFault = [&](const ServiceFault& each) { told.append(each); };
    bool isOver = false;
    translate(client, isOver);
    EXPECT_TRUE(waitUntil([&] { return isOver; }));
    EXPECT_TRUE(!told.isEmpty() && told.first().translator == TranslationClient::product);
    return told;
}

TEST(GoogleTranslatePresent, whyItDoesNotTranslateIsSaid) {
    expectFaults({{u"invalid-key", Kind::KeyRefused},
                  {u"credentials-missing", Kind::KeyRefused},
                  {u"service-disabled", Kind::NotAllowed},
                  {u"quota", Kind::QuotaUsedUp},
                  {u"too-many", Kind::QuotaUsedUp},
                  {u"too-many-429", Kind::QuotaUsedUp},
                  {u"unavailable", Kind::ServiceFailed},
                  {u"deadline", Kind::TimedOut},
                  {u"closed", Kind::NetworkFailed},
                  {u"html-200", Kind::Unreadable},
                  {u"empty", Kind::Unreadable}},
                 [](const QString& fault) {
                     return faultsOfTranslation(fault, EngineTimings().translation);
                 });
    expectFaults(unanswered,
                 [](const QString& fault) { return faultsOfTranslation(fault, 500ms); });
}

} // namespace
} // namespace orv::test
