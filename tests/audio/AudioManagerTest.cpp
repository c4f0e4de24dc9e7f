// A run over the backend link: start, results, statuses, stops.

#include "AudioManagerFixture.h"

#include "Pcm16.h"

#include <QJsonObject>

#include <cmath>
#include <span>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::waitUntil;

class AudioManagerTest : public test::AudioManagerFixture {
  protected:
    void sendStatus(const char* status, const char* message) {
        backend.send(QByteArray(R"({"type":"status","status":")") + status + R"(","message":")" +
                     message + R"("})");
    }

    void sendVersion(const char* version) {
        backend.send(QByteArray(R"({"type":"status","status":"backend_version","version":)") +
                     version + "}");
    }
};

TEST(AudioTimings, areTheProgramsOwn) {
    const AudioTimings timings;
    EXPECT_EQ(timings.linkReady, 300ms);
    EXPECT_EQ(timings.fixedChunk, 3s);
    EXPECT_EQ(timings.lastBufferSend, 2s);
    EXPECT_EQ(timings.flush, 120s);
    EXPECT_EQ(timings.stopSend, 1s);
    EXPECT_EQ(timings.meterRefresh, 33ms);
}

TEST_F(AudioManagerTest, sendsAParkedConfigurationExactlyOnceWhenTheLinkIsReady) {
    startRun();
    EXPECT_TRUE(log.contains(u"⚠️ WebSocket nicht verbunden, Config wird später gesendet"_s));
    EXPECT_TRUE(waitUntil([&] { return log.contains(u"✓ Config gesendet: en → es"_s); }));
    stopAndWait();
    EXPECT_EQ(backend.messages(u"config"_s).size(), 1);
    EXPECT_EQ(backend.messages().first()[u"type"_s], u"config"_s);
}

TEST_F(AudioManagerTest, startsTheSourceOnlyWhenTheLinkIsReady) {
    timings.linkReady = 1h;
    makeManager();
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    ASSERT_TRUE(waitUntil([&] { return backend.count(u"open"_s) == 1; }));
    EXPECT_TRUE(log.contains(u"🔌 WebSocket zum Backend verbunden (maxMsg=16MB)"_s));
    EXPECT_TRUE(manager->isCapturing());
    EXPECT_FALSE(manager->isConnected());
    EXPECT_EQ(capture.asked().preparations, 0);
}

TEST_F(AudioManagerTest, countsTheLinkAsReadyWithoutAHandshake) {
    makeManager();
    backend.command({{u"close"_s, 1000}}); // Nobody there yet: harmless.
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    EXPECT_TRUE(waitUntil([&] { return manager->isConnected(); }));
}

TEST_F(AudioManagerTest, fallsBackToWhisperWithANoticeWhenTheKeyIsMissing) {
    settings.sttEngine.set(u"deepgram"_s);
    startRun();
    EXPECT_EQ(backend.messages(u"config"_s)[0][u"sttEngine"_s], u"whisper"_s);
    EXPECT_TRUE(log.contains(u"❌ Credentials fehlen für deepgram — Whisper-Fallback"_s));
    EXPECT_TRUE(waitUntil([&] { return !notices.isEmpty(); }));
    EXPECT_EQ(notices, (QList<AudioNotice>{{AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s}}));
}

TEST_F(AudioManagerTest, showsAResultEverywhereInTheGivenOrder) {
    startRun();
    backend.send(R"({"type":"translation","original":"Hi","translation":"Hola"})");
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    EXPECT_EQ(fannedOut, (QStringList{u"published: Hi|Hola"_s, u"announced: Hi|Hola"_s}));
    EXPECT_TRUE(log.contains(u"📥 Original: Hi"_s));
    EXPECT_TRUE(log.contains(u"📥 Übersetzung: Hola"_s));
}

TEST_F(AudioManagerTest, showsNothingForAnEmptyTranslation) {
    startRun();
    backend.send(R"({"type":"translation","original":"Hi","translation":""})");
    backend.send(R"({"type":"translation","original":"","translation":"Adiós"})");
    ASSERT_TRUE(waitUntil([&] { return !fannedOut.isEmpty(); }));
    EXPECT_EQ(fannedOut.first(), u"published: |Adiós"_s);
    EXPECT_TRUE(log.contains(u"📥 Original: Hi"_s));
    EXPECT_FALSE(log.contains(u"📥 Original: "_s));
}

TEST_F(AudioManagerTest, publishesEveryStatus) {
    startRun();
    sendStatus("model_loading", "Lade");
    ASSERT_TRUE(waitUntil([&] { return manager->isModelLoading(); }));
    EXPECT_EQ(manager->backendStatus(), u"Lade"_s);
    EXPECT_TRUE(log.contains(u"📋 Backend Status: [model_loading] Lade"_s));
    sendStatus("error", "Kaputt");
    ASSERT_TRUE(waitUntil([&] { return manager->hasEngineError(); }));
    EXPECT_FALSE(manager->isModelLoading());
    sendStatus("model_loading", "Noch einmal");
    ASSERT_TRUE(waitUntil([&] { return manager->isModelLoading(); }));
    EXPECT_TRUE(manager->hasEngineError()) << "loading says nothing about the error";
    sendStatus("anything", "Egal");
    ASSERT_TRUE(waitUntil([&] { return manager->backendStatus() == u"Egal"_s; }));
    EXPECT_TRUE(manager->hasEngineError());
    EXPECT_FALSE(manager->isModelLoading());
    sendStatus("model_loaded", "Fertig");
    ASSERT_TRUE(waitUntil([&] { return !manager->hasEngineError(); }));
}

TEST_F(AudioManagerTest, acceptsVersionFourAndLater) {
    startRun();
    sendVersion("4");
    sendVersion("5");
    ASSERT_TRUE(waitUntil([&] { return log.contains(u"✓ Backend-Version OK: v5"_s); }));
    EXPECT_TRUE(log.contains(u"✓ Backend-Version OK: v4"_s));
    EXPECT_TRUE(notices.isEmpty());
}

TEST_F(AudioManagerTest, warnsOfVersionThreeAndOfNone) {
    startRun();
    sendVersion("3");
    sendVersion("\"4\"");
    ASSERT_TRUE(waitUntil([&] { return notices.size() == 2; }));
    EXPECT_TRUE(log.contains(u"⚠️ Backend veraltet: v3, erwartet v4"_s));
    EXPECT_EQ(notices[0], (AudioNotice{AudioNotice::Kind::BackendOutdated, u"3"_s}));
    EXPECT_TRUE(manager->isConnected());
}

TEST_F(AudioManagerTest, onlySaysSoWhenAConfirmationComesUnasked) {
    startRun();
    backend.send(R"({"type":"flushed"})");
    ASSERT_TRUE(
        waitUntil([&] { return log.contains(u"✓ Flush-Bestätigung vom Backend empfangen"_s); }));
    EXPECT_TRUE(manager->isConnected());
}

TEST_F(AudioManagerTest, isUnmovedByNonsense) {
    startRun();
    for (const char* nonsense :
         {"", "[1,2]", "{\"type\":5}", "{\"type\":\"translation\",\"original\":[]}",
          "{\"type\":\"status\",\"status\":{},\"message\":7}", "\\u0000"}) {
        backend.send(nonsense);
    }
    backend.send(R"({"type":"translation","original":"Hi","translation":"Hola"})");
    ASSERT_TRUE(waitUntil([&] { return !fannedOut.isEmpty(); }));
    EXPECT_TRUE(manager->isConnected());
}

TEST_F(AudioManagerTest, refusesChunksOnceTheLinkBroke) {
    startRun();
    backend.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return log.containsStart(u"❌ WebSocket receive: "_s); }));
    EXPECT_FALSE(manager->isConnected());
    EXPECT_TRUE(manager->isCapturing());
    EXPECT_TRUE(capture.isMicrophoneRunning());
}

TEST_F(AudioManagerTest, sendsAChunkThatEqualsTheConvertedCapture) {
    startRun();
    std::vector<float> speech(30000);
    for (std::size_t i = 0; i < speech.size(); ++i) {
        speech[i] = 0.9F * std::sin(static_cast<float>(i) * 0.05F);
    }
    ASSERT_TRUE(
        capture.deliver({.firstChannel = speech.data(), .frames = speech.size(), .stride = 1}));
    stopAndWait();
    ASSERT_EQ(receivedAudio().size(), 1);
    EXPECT_EQ(receivedAudio()[0], pcm16(speech));
    const QJsonObject message = backend.messages(u"audio"_s)[0];
    EXPECT_EQ(message[u"sample_rate"_s], 48000);
    EXPECT_EQ(message[u"format"_s], u"int16"_s);
}

TEST_F(AudioManagerTest, appliesTheGainOfTheRunAndForgetsItAtTheEnd) {
    makeManager();
    manager->setGain(3.0F, false);
    startRun();
    deliver(2000, 0.5F);
    stopAndWait();
    ASSERT_EQ(receivedAudio().size(), 1);
    EXPECT_EQ(receivedAudio()[0], pcm16(std::vector<float>(2000, 1.0F)));
}

TEST_F(AudioManagerTest, sendsInFixedTicksWithoutPauseDetection) {
    timings.fixedChunk = 5ms;
    makeManager();
    settings.vadEnabled.set(false);
    EXPECT_TRUE(log.contains(u"🎚 vadEnabled.didSet: true → false (isConnected=false)"_s));
    startRun();
    EXPECT_TRUE(log.contains(u"⏱️ Audio-Send-Timer gestartet (alle 3 Sekunden)"_s));
    deliver(20001);
    ASSERT_TRUE(waitUntil([&] { return receivedAudio().size() == 1; }));
    EXPECT_TRUE(log.contains(u"⏰ 3s-Timer feuert → sendAudioChunk"_s));
    EXPECT_TRUE(waitUntil([&] { return log.contains(u"✓ Audio gesendet (20001 samples)"_s); }));
}

TEST_F(AudioManagerTest, switchesTheModeAtOnceWhileConnected) {
    timings.fixedChunk = 1ms;
    startRun();
    EXPECT_TRUE(log.contains(u"⏱️ VAD Chunker aktiv (Pause: 600ms, Threshold: -35dB)"_s));
    settings.vadEnabled.set(false);
    EXPECT_TRUE(log.contains(u"🎚 vadEnabled.didSet: true → false (isConnected=true)"_s));
    EXPECT_TRUE(log.contains(u"⏱️ Audio-Send-Timer gestartet (alle 3 Sekunden)"_s));
    ASSERT_TRUE(waitUntil([&] { return log.contains(u"⏰ 3s-Timer feuert → sendAudioChunk"_s); }));
    settings.vadEnabled.set(true);
    log.clear();
    test::drainEvents();
    EXPECT_FALSE(log.contains(u"⏰ 3s-Timer feuert → sendAudioChunk"_s));
}

TEST_F(AudioManagerTest, keepsPauseDetectionInTheStore) {
    makeManager();
    settings.vadEnabled.set(false);
    settings.vadSilenceDuration.set(750);
    settings.vadThreshold.set(-42.5F);
    EXPECT_FALSE(manager->vadEnabled());
    EXPECT_EQ(manager->vadSilenceDuration(), 750);
    EXPECT_EQ(manager->vadThreshold(), -42.5F);
    manager.reset();
    makeManager();
    EXPECT_FALSE(manager->vadEnabled());
    EXPECT_EQ(manager->vadSilenceDuration(), 750);
    EXPECT_EQ(manager->vadThreshold(), -42.5F);
    const TranslationSettings again(store);
    EXPECT_FALSE(again.vadEnabled.get());
    EXPECT_EQ(again.vadSilenceDuration.get(), 750);
    EXPECT_EQ(again.vadThreshold.get(), -42.5F);
}

TEST_F(AudioManagerTest, detectsPausesByTheDefaultsWhenNothingIsStored) {
    makeManager();
    EXPECT_TRUE(manager->vadEnabled());
    EXPECT_EQ(manager->vadSilenceDuration(), 600);
    EXPECT_EQ(manager->vadThreshold(), -35.0F);
}

TEST_F(AudioManagerTest, sendsNoLastBufferOf1000Samples) {
    startRun();
    deliver(1000);
    stopAndWait();
    EXPECT_TRUE(receivedAudio().isEmpty());
}

TEST_F(AudioManagerTest, sendsALastBufferOf1001SamplesThenFlushThenStop) {
    startRun();
    deliver(1001);
    stopAndWait();
    ASSERT_TRUE(waitUntil([&] { return backend.count(u"closed"_s) == 1; }));
    QStringList types;
    for (const QJsonObject& message : backend.messages()) {
        types.append(message[u"type"_s].toString());
    }
    EXPECT_EQ(types, (QStringList{u"config"_s, u"audio"_s, u"flush"_s, u"stop"_s}));
    EXPECT_EQ(backend.events().last()[u"code"_s], 1001);
    EXPECT_FALSE(manager->isCapturing());
    EXPECT_FALSE(log.containsStart(u"❌"_s)) << log.lines().join(u'\n').toStdString();
}

TEST_F(AudioManagerTest, showsResultsThatComeWhileItStops) {
    backend.command({{u"answerFlush"_s, false}});
    startRun();
    bool done = false;
    manager->stopCapture([&done] { done = true; });
    ASSERT_TRUE(waitUntil([&] { return !backend.messages(u"flush"_s).isEmpty(); }));
    EXPECT_FALSE(capture.isMicrophoneRunning());
    backend.send(R"({"type":"translation","original":"last","translation":"último"})");
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    EXPECT_FALSE(done);
    backend.send(R"({"type":"flushed"})");
    ASSERT_TRUE(waitUntil([&] { return done; }));
}

TEST_F(AudioManagerTest, stopsAlthoughTheConfirmationNeverComes) {
    timings.flush = 1ms;
    backend.command({{u"answerFlush"_s, false}});
    startRun();
    stopAndWait();
    EXPECT_TRUE(log.contains(u"✓ Backend-Verarbeitung abgeschlossen"_s));
}

TEST_F(AudioManagerTest, doesNotWaitForABackendThatDiedWhileStopping) {
    backend.command({{u"answerFlush"_s, false}});
    startRun();
    bool done = false;
    manager->stopCapture([&done] { done = true; });
    ASSERT_TRUE(waitUntil([&] { return !backend.messages(u"flush"_s).isEmpty(); }));
    backend.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return done; }));
}

TEST_F(AudioManagerTest, sendsAndWaitsForNothingWhenNotConnected) {
    startRun();
    backend.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return !manager->isConnected(); }));
    deliver(40000);
    stopAndWait();
    EXPECT_TRUE(receivedAudio().isEmpty());
    EXPECT_FALSE(log.contains(u"⏳ Warte auf Backend-Verarbeitung..."_s));
}

TEST_F(AudioManagerTest, sendsAndWaitsForNothingWhenTheLinkBrokeBeforeItCounted) {
    timings.linkReady = 500ms;
    makeManager();
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    ASSERT_TRUE(waitUntil([&] { return backend.count(u"open"_s) == 1; }));
    backend.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return log.containsStart(u"❌ WebSocket receive: "_s); }));
    ASSERT_TRUE(waitUntil([&] { return capture.isMicrophoneRunning(); }));
    EXPECT_FALSE(manager->isConnected());
    stopAndWait();
    EXPECT_FALSE(log.contains(u"⏳ Warte auf Backend-Verarbeitung..."_s));
}

TEST_F(AudioManagerTest, endsAtOnceWithoutSendingAnything) {
    startRun();
    deliver(40000);
    manager->stopCaptureSync();
    EXPECT_TRUE(log.contains(u"🛑 Stoppe Audio-Capture (sync)"_s));
    EXPECT_FALSE(manager->isCapturing());
    EXPECT_FALSE(manager->isConnected());
    EXPECT_FALSE(capture.isMicrophoneRunning());
    ASSERT_TRUE(waitUntil([&] { return backend.count(u"closed"_s) == 1; }));
    EXPECT_EQ(backend.messages().size(), 1) << "only the configuration";
}

TEST_F(AudioManagerTest, endsAGracefulStopAtOnceWhenAskedTo) {
    backend.command({{u"answerFlush"_s, false}});
    startRun();
    bool done = false;
    manager->stopCapture([&done] { done = true; });
    ASSERT_TRUE(waitUntil([&] { return !backend.messages(u"flush"_s).isEmpty(); }));
    manager->stopCaptureSync();
    ASSERT_TRUE(waitUntil([&] { return done; }));
}

TEST_F(AudioManagerTest, stopsOnceForTwoAsks) {
    startRun();
    int done = 0;
    manager->stopCapture([&done] { ++done; });
    manager->stopCapture([&done] { ++done; });
    ASSERT_TRUE(waitUntil([&] { return done == 2; }));
    EXPECT_EQ(backend.messages(u"flush"_s).size(), 1);
}

TEST_F(AudioManagerTest, replacesARunThatStillGoes) {
    startRun();
    deliver(40000);
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    EXPECT_FALSE(capture.isMicrophoneRunning());
    ASSERT_TRUE(waitUntil([&] { return backend.messages(u"config"_s).size() == 2; }));
    EXPECT_EQ(backend.count(u"open"_s), 2);
    stopAndWait();
    EXPECT_TRUE(receivedAudio().isEmpty()) << "nothing of the first run may reach the second";
}

TEST_F(AudioManagerTest, startsAndStopsManyTimes) {
    for (int run = 0; run < 20; ++run) {
        startRun();
        deliver(2000);
        stopAndWait();
    }
    EXPECT_EQ(receivedAudio().size(), 20);
}

TEST_F(AudioManagerTest, mayBeDestroyedInTheMiddleOfARun) {
    startRun();
    deliver(40000);
    manager.reset();
    ASSERT_TRUE(waitUntil([&] { return backend.count(u"closed"_s) == 1; }));
    EXPECT_EQ(backend.events().last()[u"code"_s], 1001);
}

TEST_F(AudioManagerTest, movesTheMeterOncePerBufferAndResetsItAtTheEnd) {
    startRun();
    deliver(4096, 1.0F);
    ASSERT_TRUE(waitUntil([&] { return manager->peakLevel() > 0; }));
    EXPECT_FLOAT_EQ(manager->audioLevel(), 0.3F);
    EXPECT_FLOAT_EQ(manager->peakLevel(), 1.0F);
    stopAndWait();
    EXPECT_EQ(manager->audioLevel(), 0);
    EXPECT_EQ(manager->peakLevel(), 0);
}

} // namespace
} // namespace orv
