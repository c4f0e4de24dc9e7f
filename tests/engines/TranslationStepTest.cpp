// How the streaming engines translate.

#include "DeepgramSession.h"
#include "TranslationMessages.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using namespace test;

struct TranslatedSession : DeepgramSession {
    TranslatedSession() {
        engine = std::make_unique<DeepgramDirectEngine>(ServiceEndpoints{
            {translationHost, google.url(u"http"_s)}, {deepgramHost, service.url(u"ws"_s)}});
        engine->onTranslation = [this](const QString& original, const QString& translation) {
            reports.results.append(original + u"|"_s + translation);
        };
        engine->onFault = [this](const ServiceFault& fault) { reports.faults.append(fault); };
        engine->setTranslationKey(u"GOOGLE"_s);
        finish(engine->connect(config));
        EXPECT_TRUE(waitForOpen());
    }

    bool waitForRequests(int count) {
        return waitUntil([this, count] { return google.count(u"request"_s) == count; });
    }

    void answer(int id, const QString& text) {
        google.command(
            {{u"answer"_s, id},
             {u"body"_s, uR"({"data":{"translations":[{"translatedText":"%1"}]}})"_s.arg(text)}});
    }

    ServicePeer google{u"http_service.py"_s};
};

TEST(TranslationStep, translatesWithTheKeyOfTheHost) {
    TranslatedSession session;
    session.service.send(deepgramResult(u"Hallo"_s));
    ASSERT_TRUE(session.waitForRequests(1));
    const QJsonObject request = session.google.events(u"request"_s).first();
    EXPECT_EQ(request[u"path"_s].toString(), u"/language/translate/v2?key=GOOGLE"_s);
    EXPECT_EQ(QByteArray::fromBase64(request[u"body"_s].toString().toLatin1()),
              R"({"format":"text","q":"Hallo","target":"en"})");
    session.answer(0, u"Hello"_s);
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }));
    EXPECT_EQ(session.reports.results.first(), u"Hallo|Hello"_s);
}

TEST(TranslationStep, deliversAnEmptyTranslationForARejectedKey) {
    TranslatedSession session;
    session.service.send(deepgramResult(u"Hallo"_s));
    session.google.command({{u"always"_s, true},
                            {u"status"_s, 400},
                            {u"body"_s, uR"({"error":{"code":400,"message":"API key"}})"_s}});
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 1; }));
    EXPECT_EQ(session.reports.results.first(), u"Hallo|"_s);
    ASSERT_EQ(session.reports.faults.size(), 1);
    EXPECT_EQ(session.reports.faults.first().translator, u"Google Translate"_s);
}

TEST(TranslationStep, saysThatTheKeyIsMissingWhereSomethingIsToBeTranslated) {
    for (const QString& target : {u"en"_s, u"de"_s}) {
        DeepgramSession session;
        CloudEngineConfig spoken = config;
        spoken.targetLang = target;
        finish(session.engine->connect(spoken));
        const ServiceFault missing{ServiceFault::Kind::KeyMissing, {}, u"Google Translate"_s};
        EXPECT_EQ(session.reports.faults, target == u"en" ? QList{missing} : QList<ServiceFault>());
    }
}

TEST(TranslationStep, keepsTheOrderOfWhatWasSaid) {
    TranslatedSession session;
    session.service.send(deepgramResult(u"eins"_s));
    ASSERT_TRUE(session.waitForRequests(1));
    session.service.send(deepgramResult(u"zwei"_s));
    ASSERT_TRUE(session.waitForRequests(2));
    session.answer(1, u"two"_s);
    session.answer(0, u"one"_s);
    ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == 2; }));
    EXPECT_EQ(session.reports.results, (QStringList{u"eins|one"_s, u"zwei|two"_s}));
}

TEST(TranslationStep, endsSilentlyWhenTheEngineIsReleased) {
    TranslatedSession session;
    session.service.send(deepgramResult(u"eins"_s));
    ASSERT_TRUE(session.waitForRequests(1));
    session.engine.reset();
    test::drainEvents();
    EXPECT_TRUE(session.reports.results.isEmpty());
}

TEST(TranslationStep, letsTheResultReleaseTheEngine) {
    TranslatedSession session;
    session.engine->onTranslation = [&](const QString&, const QString&) { session.engine.reset(); };
    session.service.send(deepgramResult(u"eins"_s));
    session.service.send(deepgramResult(u"zwei"_s));
    ASSERT_TRUE(session.waitForRequests(2));
    session.answer(0, u"one"_s);
    EXPECT_TRUE(waitUntil([&] { return !session.engine; }));
}

} // namespace
} // namespace orv
