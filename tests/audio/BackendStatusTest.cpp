// What the manager publishes of the speech server's word.

#include "AudioManagerFixture.h"

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class BackendStatus : public AudioManagerFixture {
  protected:
    const BackendNews& news() const { return manager->backendNews(); }

    void warn() {
        backend.send(R"({"type":"status","status":"warning","message":"⚠️ still",)"
                     R"("code":"recognition.no_answer","parameters":{"engine":"Vosk"}})");
        ASSERT_TRUE(waitUntil([&] { return news().disturbances.size() == 1; }));
    }
};

TEST_F(BackendStatus, publishesTheCodeBesideTheMessage) {
    startRun();
    warn();
    EXPECT_EQ(manager->backendStatus(), u"⚠️ still"_s);
    EXPECT_EQ(news().latest.notice, (BackendNotice{.code = u"recognition.no_answer"_s,
                                                   .parameters = {{u"engine"_s, u"Vosk"_s}}}));
    EXPECT_FALSE(manager->hasEngineError());
    backend.send(R"({"type":"status","status":"engine","message":"x","code":"engine.serving",)"
                 R"("parameters":{},"recognition":[{"code":"c"}]})");
    ASSERT_TRUE(waitUntil([&] { return news().serving.has_value(); }));
    EXPECT_EQ(news().serving->recognition.size(), 1);
    EXPECT_TRUE(news().disturbances.isEmpty());
}

TEST_F(BackendStatus, forgetsTheWarningsOfTheRunBefore) {
    startRun();
    warn();
    stopAndWait();
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    EXPECT_TRUE(news().disturbances.isEmpty());
    EXPECT_EQ(manager->backendStatus(), u"⚠️ still"_s);
}

TEST_F(BackendStatus, isReplacedByADirectEnginesWord) {
    engine = std::make_shared<FakeEngine>(u"azure"_s, u"AzureDirectEngine"_s, false, true);
    settings.sttEngine.set(u"azure"_s);
    settings.azureApiKey.set(u"key"_s);
    startRun();
    warn();
    engine->onStatus(u"error"_s, u"gone"_s);
    ASSERT_TRUE(waitUntil([&] { return manager->backendStatus() == u"gone"_s; }));
    EXPECT_EQ(news().latest.notice, BackendNotice());
}

} // namespace

} // namespace orv::test
