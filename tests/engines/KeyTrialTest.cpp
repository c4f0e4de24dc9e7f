// Whether a key works, asked of the stand-ins of the services as they are today.

#include "KeyTrial.h"

#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "EngineCatalogue.h"
#include "GoogleCloudMessages.h"
#include "PresentServices.h"
#include "TranslationMessages.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

using Kind = ServiceFault::Kind;

/// What comes of trying the key in one of an engine's fields.
struct Trial {
    explicit Trial(const QString& engine)
        : engine_(*catalogue_.find(engine)) {}

    std::optional<ServiceFault> of(const QString& typed, const QString& region = {},
                                   std::size_t field = 0) {
        const CloudEngineConfig config{.sourceLang = {},
                                       .targetLang = {},
                                       .apiKey = typed,
                                       .region = region,
                                       .sampleRate = 48000};
        KeyTrial trial;
        bool isOver = false;
        std::optional<ServiceFault> outcome;
        QObject::connect(&trial, &KeyTrial::ended, &trial,
                         [&](const std::optional<ServiceFault>& fault) {
                             isOver = true;
                             outcome = fault;
                         });
        trial.begin(engine_.fields[field].questions(endpoints, config), typed);
        EXPECT_TRUE(waitUntil([&] { return isOver; }));
        return outcome;
    }

    std::optional<Kind> kindOf(const QString& typed, const QString& region = {},
                               std::size_t field = 0) {
        const auto fault = of(typed, region, field);
        return fault ? std::optional(fault->kind) : std::nullopt;
    }

    ServiceEndpoints endpoints;

  private:
    EngineCatalogue catalogue_;
    const EngineDescriptor& engine_;
};

TEST(KeyTrial, deepgramTakesAStreamThatIsNeverUsed) {
    PresentService service(u"cloud_services.deepgram"_s);
    Trial trial(u"deepgram"_s);
    trial.endpoints = {{deepgramHost, service.url(u"ws"_s)}};
    EXPECT_EQ(trial.of(presentKey), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(service.count(u"audio"_s), 0);
    const auto fault = trial.of(u"wrong"_s);
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->kind, Kind::KeyRefused);
    EXPECT_EQ(fault->said, u"Invalid credentials."_s);
    PresentService unpaid(u"cloud_services.deepgram"_s, {u"--fault"_s, u"credit"_s});
    trial.endpoints = {{deepgramHost, unpaid.url(u"ws"_s)}};
    EXPECT_EQ(trial.kindOf(presentKey), Kind::NoCredit);
}

TEST(KeyTrial, assemblyaiGivesAToken) {
    PresentService service(u"cloud_services.assemblyai"_s);
    Trial trial(u"assemblyai"_s);
    trial.endpoints = {{assemblyaiStreamingHost, service.url(u"ws"_s)}};
    EXPECT_EQ(trial.of(presentKey), std::nullopt);
    EXPECT_EQ(trial.kindOf(u"wrong"_s), Kind::KeyRefused);
    EXPECT_EQ(service.count(u"accepted"_s), 0) << "no session, which would cost something";
}

TEST(KeyTrial, azureGivesATokenInTheKeysRegion) {
    PresentService service(u"cloud_rest.azure_speech"_s, {u"--region"_s, u"westeurope"_s});
    Trial trial(u"azure"_s);
    trial.endpoints = {{azureTokenHost, service.url(u"http"_s)}};
    EXPECT_EQ(trial.of(presentKey, u"westeurope"_s), std::nullopt);
    EXPECT_EQ(trial.kindOf(u"wrong"_s, u"westeurope"_s), Kind::KeyRefused);
    EXPECT_EQ(trial.kindOf(presentKey, u""_s), Kind::RegionMissing);
}

TEST(KeyTrial, googleTranslatesAndRecognises) {
    PresentService speech(u"cloud_rest.google_speech"_s);
    PresentService translate(u"cloud_rest.google_translate"_s);
    Trial trial(u"google_rest"_s);
    trial.endpoints = {{googleRecognitionHost, speech.url(u"http"_s)},
                       {translationHost, translate.url(u"http"_s)}};
    EXPECT_EQ(trial.of(presentKey), std::nullopt);
    EXPECT_EQ(trial.kindOf(u"wrong"_s), Kind::KeyRefused);
    PresentService refusing(u"cloud_rest.google_speech"_s,
                            {u"--fault"_s, u"service-disabled"_s, u"html-200"_s});
    trial.endpoints = {{googleRecognitionHost, refusing.url(u"http"_s)},
                       {translationHost, translate.url(u"http"_s)}};
    EXPECT_EQ(trial.kindOf(presentKey), Kind::NotAllowed);
    EXPECT_EQ(trial.kindOf(presentKey), Kind::Unreadable);
    PresentService notTranslating(u"cloud_rest.google_translate"_s,
                                  {u"--fault"_s, u"service-disabled"_s});
    trial.endpoints = {{googleRecognitionHost, speech.url(u"http"_s)},
                       {translationHost, notTranslating.url(u"http"_s)}};
    EXPECT_EQ(trial.kindOf(presentKey), Kind::NotAllowed);
}

TEST(KeyTrial, theKeyForTranslationIsAskedOfTheTranslationAlone) {
    PresentService translate(u"cloud_rest.google_translate"_s);
    for (const QString& engine : {u"deepgram"_s, u"assemblyai"_s}) {
        Trial trial(engine);
        trial.endpoints = {{translationHost, translate.url(u"http"_s)}};
        EXPECT_EQ(trial.of(presentKey, {}, 1), std::nullopt);
        EXPECT_EQ(trial.kindOf(u"wrong"_s, {}, 1), Kind::KeyRefused);
    }
}

TEST(KeyTrial, saysThatNobodyIsThere) {
    Trial trial(u"deepgram"_s);
    trial.endpoints = {{deepgramHost, u"ws://127.0.0.1:1"_s}};
    EXPECT_EQ(trial.kindOf(presentKey), Kind::NetworkFailed);
}

TEST(KeyTrial, whatCannotBeSentIsNoKey) {
    for (const QString& engine : {u"deepgram"_s, u"assemblyai"_s, u"azure"_s}) {
        EXPECT_EQ(Trial(engine).kindOf(u"a\nb"_s, u"westeurope"_s), Kind::KeyRefused);
    }
}

TEST(KeyTrial, doesNotQuoteTheKey) {
    PresentService service(u"cloud_services.assemblyai"_s);
    KeyTrial trial;
    QString said;
    QObject::connect(&trial, &KeyTrial::ended, &trial,
                     [&](const std::optional<ServiceFault>& fault) { said = fault->said; });
    const auto quoting = [](const HttpOutcome&) {
        return ServiceFault{Kind::KeyRefused, u"no such key: abc"_s};
    };
    trial.begin({{.call = {.url = QUrl(service.url(u"http"_s))}, .judge = quoting}}, u"abc"_s);
    ASSERT_TRUE(waitUntil([&] { return !said.isEmpty(); }));
    EXPECT_EQ(said, u"no such key: …"_s);
}

TEST(KeyTrial, isGivenUpByItsEnd) {
    PresentService service(u"cloud_rest.google_translate"_s, {u"--fault"_s, u"slow"_s});
    bool isOver = false;
    {
        KeyTrial trial;
        QObject::connect(&trial, &KeyTrial::ended, &trial, [&] { isOver = true; });
        const ServiceEndpoints endpoints{{translationHost, service.url(u"http"_s)}};
        trial.begin({translationKeyQuestion(endpoints, presentKey)}, presentKey);
        ASSERT_TRUE(waitUntil([&] { return service.count(u"request"_s) == 1; }));
    }
    drainEvents();
    EXPECT_FALSE(isOver);
}

} // namespace
} // namespace orv::test
