// Runs with a direct engine, and the choice between engine and backend.

#include "AudioManagerFixture.h"

#include "DirectEngineSession.h"
#include "Pcm16.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::FakeEngine;
using test::waitUntil;

class DirectEngineRun : public test::AudioManagerFixture {
  protected:
    void useStreaming() {
        engine =
            std::make_shared<FakeEngine>(u"assemblyai"_s, u"AssemblyAIDirectEngine"_s, true, false);
        settings.sttEngine.set(u"assemblyai"_s);
        settings.assemblyaiApiKey.set(u"key"_s);
    }

    void useChunked() {
        engine = std::make_shared<FakeEngine>(u"azure"_s, u"AzureDirectEngine"_s, false, true);
        settings.sttEngine.set(u"azure"_s);
        settings.azureApiKey.set(u"key"_s);
    }

    /// Starts a run whose first chunk is with the engine, which has not answered yet.
    void sendOneChunkSlowly() {
        useChunked();
        engine->isSlow = true;
        timings.fixedChunk = 1ms;
        makeManager();
        settings.vadEnabled.set(false);
        startRun();
        deliver(20001);
        ASSERT_TRUE(waitUntil([&] { return engine->audio.size() == 1; }));
    }

    QString onlyFile(const QString& pattern) const {
        const QDir output(folder.filePath(u"output"_s));
        const QStringList names = output.entryList({pattern});
        EXPECT_EQ(names.size(), 1);
        QFile file(output.filePath(names.value(0)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll());
    }
};

class BackendEngines : public DirectEngineRun, public testing::WithParamInterface<const char*> {};

TEST_P(BackendEngines, neverMakeADirectEngine) {
    useChunked();
    settings.sttEngine.set(QString::fromLatin1(GetParam()));
    settings.googleServiceAccountPath.set(u"/account.json"_s);
    startRun();
    EXPECT_TRUE(log.contains(u"🔌 setupDirectEngine: engine="_s + settings.sttEngine.get()));
    EXPECT_FALSE(engine->connectedWith);
}

INSTANTIATE_TEST_SUITE_P(All, BackendEngines, testing::Values("whisper", "vosk", "google_grpc"));

TEST_F(DirectEngineRun, runsOnTheBackendForAnUnknownEngine) {
    settings.sttEngine.set(u"telepathy"_s);
    startRun();
    EXPECT_TRUE(log.contains(u"🔌 Direct Engine: NONE — unknown engine telepathy"_s));
    deliver(30000);
    stopAndWait();
    EXPECT_EQ(receivedAudio().size(), 1);
}

TEST_F(DirectEngineRun, givesAStreamingEngineEveryBufferInOrder) {
    useStreaming();
    startRun();
    for (int index = 1; index <= 50; ++index) {
        deliver(100, static_cast<float>(index) / 100.0F);
    }
    ASSERT_TRUE(waitUntil([&] { return engine->audio.size() == 50; }));
    for (int index = 1; index <= 50; ++index) {
        EXPECT_EQ(engine->audio[index - 1],
                  pcm16(std::vector<float>(100, static_cast<float>(index) / 100.0F)));
    }
    EXPECT_TRUE(log.contains(u"🔌 Direct Engine: AssemblyAIDirectEngine (streaming)"_s));
    EXPECT_TRUE(log.contains(u"✅ Direct Engine AssemblyAIDirectEngine verbunden"_s));
    stopAndWait();
    EXPECT_TRUE(receivedAudio().isEmpty());
}

TEST_F(DirectEngineRun, handsTheTranslationKeyToAnEngineThatNeedsOne) {
    useStreaming();
    settings.googleApiKey.set(u"google"_s);
    startRun();
    EXPECT_EQ(engine->translationKey, u"google"_s);
    EXPECT_TRUE(log.contains(u"🔌 AssemblyAI: Google Translate Key gesetzt für Übersetzung"_s));
}

TEST_F(DirectEngineRun, namesDeepgramAsTheOneThatGetsTheTranslationKey) {
    engine = std::make_shared<FakeEngine>(u"deepgram"_s, u"DeepgramDirectEngine"_s, true, false);
    settings.sttEngine.set(u"deepgram"_s);
    settings.deepgramApiKey.set(u"key"_s);
    settings.googleApiKey.set(u"google"_s);
    startRun();
    EXPECT_EQ(engine->translationKey, u"google"_s);
    EXPECT_TRUE(log.contains(u"🔌 Deepgram: Google Translate Key gesetzt für Übersetzung"_s));
    EXPECT_TRUE(log.lines().filter(u"🔌 Direct Engine: "_s).isEmpty());
}

TEST_F(DirectEngineRun, givesAChunkedEngineTheChunkersChunks) {
    useChunked();
    timings.fixedChunk = 1ms;
    makeManager();
    settings.vadEnabled.set(false);
    startRun();
    EXPECT_TRUE(log.contains(u"🔌 Direct Engine: AzureDirectEngine"_s));
    deliver(20001);
    ASSERT_TRUE(waitUntil([&] { return engine->audio.size() == 1; }));
    EXPECT_EQ(engine->audio[0], pcm16(std::vector<float>(20001, 0.25F)));
    EXPECT_TRUE(log.contains(u"🎵 Direct Engine: Sende 20001 Samples"_s));
}

TEST_F(DirectEngineRun, connectsWithTheRunsLanguagesAndTheEnginesKey) {
    useChunked();
    startRun();
    ASSERT_TRUE(engine->connectedWith);
    EXPECT_EQ(engine->connectedWith->sourceLang, u"en"_s);
    EXPECT_EQ(engine->connectedWith->targetLang, u"es"_s);
    EXPECT_EQ(engine->connectedWith->apiKey, u"key"_s);
    EXPECT_EQ(engine->connectedWith->region, u"eastus"_s);
    EXPECT_EQ(engine->connectedWith->sampleRate, 48000);
}

TEST_F(DirectEngineRun, bringsResultsEverywhereAndIntoTheTranscript) {
    useChunked();
    startRun();
    engine->bring(u"Hi"_s, u"Hola"_s);
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    EXPECT_EQ(fannedOut, (QStringList{u"published: Hi|Hola"_s, u"announced: Hi|Hola"_s}));
    stopAndWait();
    EXPECT_TRUE(onlyFile(u"transcript_*.txt"_s).endsWith(u"Original: Hi\nTranslation: Hola\n\n"_s));
    EXPECT_TRUE(onlyFile(u"subtitles_*.srt"_s).endsWith(u"\nHi\nHola\n\n"_s));
}

TEST_F(DirectEngineRun, keepsAResultThatComesRightBeforeTheEndInTheTranscript) {
    useChunked();
    startRun();
    engine->bring(u"last"_s, u"último"_s);
    manager->stopCaptureSync();
    EXPECT_TRUE(
        onlyFile(u"transcript_*.txt"_s).endsWith(u"Original: last\nTranslation: último\n\n"_s));
}

TEST_F(DirectEngineRun, writesNoTranscriptWhenNoneIsWanted) {
    useChunked();
    settings.saveTranscript.set(false);
    startRun();
    EXPECT_FALSE(QDir(folder.filePath(u"output"_s)).exists());
}

TEST_F(DirectEngineRun, goesOnWithoutATranscriptWhenTheDiskRefuses) {
    QFile obstacle(folder.filePath(u"output"_s));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    useChunked();
    startRun();
    EXPECT_EQ(
        log.lines().filter(u"❌ DirectEngineTranscriptWriter: outputDir konnte nicht"_s).size(), 1);
    engine->bring(u"Hi"_s, u"Hola"_s);
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    stopAndWait();
}

TEST_F(DirectEngineRun, publishesTheEnginesState) {
    useChunked();
    startRun();
    engine->onStatus(u"error"_s, u"gone"_s);
    ASSERT_TRUE(waitUntil([&] { return manager->hasEngineError(); }));
    EXPECT_EQ(manager->backendStatus(), u"gone"_s);
    EXPECT_TRUE(log.contains(u"📋 Direct Engine Status: [error] gone"_s));
    engine->onStatus(u"connected"_s, u"back"_s);
    ASSERT_TRUE(waitUntil([&] { return !manager->hasEngineError(); }));
    EXPECT_EQ(manager->backendStatus(), u"back"_s);
}

TEST_F(DirectEngineRun, fallsBackToTheBackendWhenTheEngineCannotConnect) {
    useStreaming();
    engine->connectError = u"AssemblyAI API Key fehlt"_s;
    startRun();
    ASSERT_TRUE(waitUntil([&] {
        return log.contains(
            u"❌ Direct Engine AssemblyAIDirectEngine Fehler: AssemblyAI API Key fehlt"_s);
    }));
    test::drainEvents();
    engine->bring(u"late"_s, u"tarde"_s);
    deliver(30000);
    stopAndWait();
    EXPECT_EQ(receivedAudio().size(), 1);
    EXPECT_TRUE(engine->audio.isEmpty());
    EXPECT_TRUE(onlyFile(u"transcript_*.txt"_s).endsWith(u"=\n\n"_s)) << "closed for good";
    EXPECT_TRUE(fannedOut.isEmpty());
}

TEST_F(DirectEngineRun, disconnectsTheEngineOnAGracefulStop) {
    useChunked();
    startRun();
    stopAndWait();
    EXPECT_TRUE(log.contains(u"🔌 Direct Engine disconnected"_s));
    EXPECT_EQ(engine->disconnects, 1);
}

TEST_F(DirectEngineRun, disconnectsTheEngineOnAnImmediateStop) {
    useStreaming();
    startRun();
    manager->stopCaptureSync();
    EXPECT_TRUE(log.contains(u"🔌 Direct Engine disconnected (sync)"_s));
    EXPECT_EQ(engine->disconnects, 1);
}

TEST_F(DirectEngineRun, survivesAnEngineThatThrowsForAChunk) {
    useStreaming();
    engine->sendError = u"HTTP 500"_s;
    startRun();
    deliver(100);
    deliver(100);
    ASSERT_TRUE(waitUntil([&] { return engine->audio.size() == 2; }));
    EXPECT_TRUE(log.contains(u"❌ Direct Engine AssemblyAIDirectEngine Fehler: HTTP 500"_s));
}

TEST_F(DirectEngineRun, disconnectsTheEngineBehindTheLastSound) {
    useStreaming();
    qsizetype before = 0;
    engine->onDisconnect = [&] { before = engine->audio.size(); };
    startRun();
    for (int block = 0; block < 20; ++block) {
        deliver(100);
    }
    stopAndWait();
    EXPECT_EQ(engine->disconnects, 1);
    EXPECT_EQ(before, 20);
}

TEST_F(DirectEngineRun, disconnectsTheEngineOfAnImmediateStopBeforeItStopsTheSource) {
    useStreaming();
    bool stillCapturing = false;
    engine->onDisconnect = [&] {
        const float sample = 0.0F;
        stillCapturing = capture.deliver({.firstChannel = &sample, .frames = 1, .stride = 1});
    };
    startRun();
    manager->stopCaptureSync();
    EXPECT_TRUE(stillCapturing);
    EXPECT_TRUE(engine->audio.isEmpty());
}

TEST_F(DirectEngineRun, waitsForTheLastResultsAndClosesTheTranscriptBehindThem) {
    sendOneChunkSlowly();
    bool stopped = false;
    manager->stopCapture([&] { stopped = true; });
    engine->bring(u"last"_s, u"último"_s);
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    EXPECT_TRUE(manager->isCapturing());
    engine->answers.first().complete(true);
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_EQ(fannedOut.value(0), u"published: last|último"_s);
    EXPECT_TRUE(
        onlyFile(u"transcript_*.txt"_s).endsWith(u"Original: last\nTranslation: último\n\n"_s));
    EXPECT_EQ(engine.use_count(), 1) << "given up";
}

TEST_F(DirectEngineRun, givesUpLastResultsThatDoNotCome) {
    timings.lastAnswers = 1ms;
    sendOneChunkSlowly();
    stopAndWait();
    EXPECT_EQ(log.count(u"⚠️ Letzte Ergebnisse kamen nicht rechtzeitig"_s), 1);
    engine->answers.first().complete(true);
    test::drainEvents();
    EXPECT_TRUE(fannedOut.isEmpty());
    EXPECT_TRUE(onlyFile(u"transcript_*.txt"_s).endsWith(u"=\n\n"_s));
    EXPECT_EQ(engine.use_count(), 1);
}

TEST_F(DirectEngineRun, canStartAgainWhileItWaitsForTheLastResults) {
    sendOneChunkSlowly();
    const std::shared_ptr<FakeEngine> first = engine;
    manager->stopCapture({});
    useChunked();
    startRun();
    first->answers.first().complete(true);
    test::drainEvents();
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_TRUE(manager->isCapturing());
    EXPECT_TRUE(fannedOut.isEmpty());
}

TEST_F(DirectEngineRun, hasNoMoreBlocksUnderWayThanTheEngineTakes) {
    useChunked();
    engine->isSlow = true;
    engine->atOnce = 2;
    DirectEngineSession session(engine, u"Azure"_s, 1h, nullptr);
    session.open({});
    for (const char* block : {"one", "two", "three"}) {
        session.sendAudio(block);
    }
    EXPECT_EQ(engine->audio, (QList<QByteArray>{"one", "two"}));
    engine->answers[1].complete(true);
    EXPECT_EQ(engine->audio.size(), 3);
    bool drained = false;
    QObject::connect(&session, &DirectEngineSession::drained, &session, [&] { drained = true; });
    session.end();
    engine->answers[0].complete(true);
    test::drainEvents();
    EXPECT_EQ(engine->disconnects, 0);
    EXPECT_FALSE(drained);
    engine->answers[2].complete(true);
    test::drainEvents();
    EXPECT_EQ(engine->disconnects, 1);
    EXPECT_TRUE(drained);
}

TEST_F(DirectEngineRun, bringsNoResultOfARunIntoTheNext) {
    useChunked();
    startRun();
    stopAndWait();
    const std::shared_ptr<FakeEngine> first = std::exchange(engine, nullptr);
    useChunked();
    startRun();
    EXPECT_EQ(first.use_count(), 1) << "given up";
    first->bring(u"late"_s, u"tarde"_s);
    test::drainEvents();
    EXPECT_TRUE(fannedOut.isEmpty());
}

TEST_F(DirectEngineRun, tellsPeopleWhatTheServiceRefusesUntilItBringsAResult) {
    useChunked();
    engine->sendError = u"HTTP 403"_s;
    engine->sendFault = ServiceFault{ServiceFault::Kind::NoCredit, u"balance is 0"_s, {}};
    timings.fixedChunk = 1ms;
    makeManager();
    settings.vadEnabled.set(false);
    startRun();
    deliver(20001);
    const BackendNews& news = manager->backendNews();
    ASSERT_TRUE(waitUntil([&] { return !news.disturbances.isEmpty(); }));
    const BackendNotice expected{
        .code = u"service.no_credit"_s,
        .parameters = {{u"engine"_s, u"Microsoft Azure"_s}, {u"said"_s, u"balance is 0"_s}}};
    EXPECT_EQ(news.disturbances.first().notice.code, expected.code);
    EXPECT_EQ(news.disturbances.first().notice.parameters, expected.parameters);
    EXPECT_EQ(news.disturbances.first().status, u"error"_s);
    EXPECT_TRUE(log.contains(u"❌ Direct Engine AzureDirectEngine Fehler: HTTP 403"_s));
    engine->bring(u"hello"_s, u"hola"_s);
    EXPECT_TRUE(waitUntil([&] { return news.disturbances.isEmpty(); }));
}

TEST_F(DirectEngineRun, tellsPeopleWhyTheTranslationIsMissingUntilThereIsOne) {
    useStreaming();
    startRun();
    const BackendNews& news = manager->backendNews();
    engine->onFault({ServiceFault::Kind::KeyRefused, u"bad"_s, u"Google Translate"_s});
    engine->onTranslation(u"hello"_s, u""_s);
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    ASSERT_EQ(news.disturbances.size(), 1);
    EXPECT_EQ(news.disturbances.first().status, u"warning"_s) << "it still recognises";
    EXPECT_EQ(news.disturbances.first().notice.parameters.value(u"engine"_s),
              u"Google Translate"_s);
    EXPECT_FALSE(manager->hasEngineError());
    engine->onTranslation(u"hello"_s, u"hola"_s);
    EXPECT_TRUE(waitUntil([&] { return news.disturbances.isEmpty(); }));
}

TEST_F(DirectEngineRun, whyAServiceCannotBeConnectedIsToldWhileTheServerServes) {
    useChunked();
    engine->connectError = u"Azure Region fehlt"_s;
    engine->connectFault = ServiceFault{ServiceFault::Kind::RegionMissing};
    startRun();
    const BackendNews& news = manager->backendNews();
    ASSERT_TRUE(waitUntil([&] { return !news.disturbances.isEmpty(); }));
    EXPECT_EQ(news.disturbances.first().notice.code, u"service.region_missing"_s);
    deliver(30000);
    stopAndWait();
    EXPECT_EQ(receivedAudio().size(), 1);
}

TEST_F(DirectEngineRun, fallsBackToTheBackendsChunksWhenAChunkedEngineCannotConnect) {
    useChunked();
    engine->connectError = u"Azure Key fehlt"_s;
    startRun();
    ASSERT_TRUE(waitUntil([&] {
        return log.contains(u"❌ Direct Engine AzureDirectEngine Fehler: Azure Key fehlt"_s);
    }));
    test::drainEvents();
    deliver(30000);
    stopAndWait();
    EXPECT_EQ(receivedAudio().size(), 1);
    EXPECT_TRUE(engine->audio.isEmpty());
}

TEST_F(DirectEngineRun, dropsWhatHasWaitedForTooLongAndSaysHowMuch) {
    useChunked();
    engine->isSlow = true;
    DirectEngineSession session(engine, u"Azure"_s, 0ms, nullptr);
    QList<StatusMessage> faults;
    QObject::connect(&session, &DirectEngineSession::faultArrived, &session,
                     [&](const StatusMessage& fault) { faults.append(fault); });
    session.open({});
    session.sendAudio("first");
    session.sendAudio(QByteArray(48000, '\0')); // Half a second.
    session.sendAudio(QByteArray(96000, '\0'));
    engine->answers.first().complete(true);
    test::drainEvents();
    EXPECT_EQ(engine->audio.size(), 1);
    EXPECT_TRUE(log.contains(u"⚠️ Direct Engine AzureDirectEngine: 1.5 s Ton verworfen, der "
                             "zu lange gewartet hat"_s));
    ASSERT_EQ(faults.size(), 1);
    EXPECT_EQ(faults.first().status, u"warning"_s);
    EXPECT_EQ(faults.first().notice.code, u"service.too_slow"_s);
    EXPECT_EQ(faults.first().notice.parameters.value(u"said"_s), u"1.5 s"_s);
}

TEST_F(DirectEngineRun, saysNowAndThenWhatItDropsWhileNothingGoesThrough) {
    useStreaming();
    engine->isSlow = true;
    DirectEngineSession session(engine, u"AssemblyAI"_s, 0ms, nullptr);
    session.open({});
    session.sendAudio("first");
    for (int block = 0; block < 120; ++block) {
        session.sendAudio(QByteArray(9600, '\0')); // A tenth of a second.
    }
    EXPECT_EQ(log.count(u"⚠️ Direct Engine AssemblyAIDirectEngine: 5.0 s Ton verworfen, der zu "
                        "lange gewartet hat"_s),
              2);
    engine->answers.first().complete(true);
}

TEST_F(DirectEngineRun, dropsResultsThatComeAfterAnImmediateStop) {
    useChunked();
    startRun();
    manager->stopCaptureSync();
    engine->bring(u"late"_s, u"tarde"_s);
    test::drainEvents();
    EXPECT_TRUE(fannedOut.isEmpty());
}

} // namespace
} // namespace orv
