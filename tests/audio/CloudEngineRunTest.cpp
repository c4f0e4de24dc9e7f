// Whole runs with the real engines, in front of services in processes of their own.

#include "AssemblyAIMessages.h"
#include "AudioManagerFixture.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "GoogleCloudMessages.h"
#include "Pcm16.h"
#include "ServicePeer.h"
#include "TranslationMessages.h"

#include <QDir>
#include <QFile>

#include <random>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

using test::ServicePeer;
using test::waitUntil;

class CloudEngineRun : public test::AudioManagerFixture {
  protected:
    void use(const QString& id, ServicePeer& service) { use(id, service, service); }

    void use(const QString& id, ServicePeer& service, ServicePeer& translation,
             EngineTimings times = {}) {
        endpoints = {{translationHost, translation.url(u"http"_s)},
                     {googleRecognitionHost, service.url(u"http"_s)},
                     {deepgramHost, service.url(u"ws"_s)},
                     {assemblyaiHost, service.url(u"ws"_s)},
                     {assemblyaiStreamingHost, service.url(u"ws"_s)},
                     {azureRecognitionHost, service.url(u"http"_s)},
                     {azureTranslationHost, service.url(u"http"_s)},
                     {azureTranslatorHost, service.url(u"http"_s)}};
        engineTimings = times;
        settings.sttEngine.set(id);
        settings.deepgramApiKey.set(u"SECRET"_s);
        settings.assemblyaiApiKey.set(u"SECRET"_s);
        settings.azureApiKey.set(u"SECRET"_s);
        timings.flush = 1ms; // The backend has nothing to say.
    }

    /// Plays `seconds` of noise in buffers like a microphone's, as fast as they are taken, and
    /// returns what the service must get of it.
    QByteArray play(int seconds) {
        std::mt19937 noise(1);
        std::uniform_real_distribution<float> level(-1.0F, 1.0F);
        QByteArray all;
        for (int frame = 0; frame < seconds * 48000; frame += 4096) {
            std::vector<float> samples(
                static_cast<std::size_t>(std::min(4096, seconds * 48000 - frame)));
            for (float& sample : samples) {
                sample = level(noise);
            }
            all += pcm16(samples);
            EXPECT_TRUE(capture.deliver(
                {.firstChannel = samples.data(), .frames = samples.size(), .stride = 1}));
        }
        return all;
    }

    /// Starts a run whose first chunk is with the service, which has not answered yet.
    void askForAChunk(ServicePeer& service) {
        use(u"azure"_s, service);
        timings.fixedChunk = 1ms;
        makeManager();
        settings.vadEnabled.set(false);
        startRun();
        deliver(20001);
        ASSERT_TRUE(waitUntil([&] { return service.count(u"request"_s) == 1; }));
    }

    /// Starts a run whose first two chunks are with the service, which has not answered yet, and
    /// whose third is complete.
    void letAChunkWaitBehindTwo(ServicePeer& service) {
        askForAChunk(service);
        deliver(20002, 0.5F);
        ASSERT_TRUE(waitUntil([&] { return service.count(u"request"_s) == 2; }));
        deliver(20003, 0.5F);
        ASSERT_TRUE(
            waitUntil([&] { return log.contains(u"🎵 Direct Engine: Sende 20003 Samples"_s); }));
        test::drainEvents();
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

QString deepgramResult(const QString& transcript) {
    return uR"({"type":"Results","is_final":true,"channel":{"alternatives":[{"transcript":"%1"}]}})"_s
        .arg(transcript);
}

/// Recognised, and translated into nothing.
QString azureResult(const QString& text) {
    return uR"({"RecognitionStatus":"Success","DisplayText":"%1","Translations":[{"Text":""}]})"_s
        .arg(text);
}

TEST_F(CloudEngineRun, bringsAMinuteOfSoundToDeepgramBitForBit) {
    ServicePeer service(u"streaming_service.py"_s, {u"deepgram"_s, u"--key"_s, u"SECRET"_s});
    use(u"deepgram"_s, service, service, {.oldestSpeech = 1h});
    startRun();
    const QByteArray played = play(60);
    ASSERT_TRUE(waitUntil([&] { return service.audio().size() >= played.size(); }, 100s));
    EXPECT_TRUE(service.audio() == played);
    stopAndWait();
    EXPECT_TRUE(log.lines().filter(u"SECRET"_s).isEmpty());
}

TEST_F(CloudEngineRun, bringsAMinuteOfSoundToAssemblyAIBitForBit) {
    // The session begins only after much of the sound has been captured.
    ServicePeer service(u"streaming_service.py"_s, {u"assemblyai"_s, u"--wait"_s});
    use(u"assemblyai"_s, service, service, {.oldestSpeech = 1h});
    startRun();
    ASSERT_TRUE(waitUntil([&] { return service.count(u"open"_s) == 1; }));
    const QByteArray played = play(60);
    service.command({{u"begin"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return service.audio().size() >= played.size(); }, 100s));
    EXPECT_TRUE(service.audio() == played);
    EXPECT_EQ(service.count(u"misuse"_s), 0);
    stopAndWait();
}

TEST_F(CloudEngineRun, stopsWhileItIsStillConnecting) {
    ServicePeer service(u"streaming_service.py"_s, {u"assemblyai"_s, u"--wait"_s});
    use(u"assemblyai"_s, service);
    timings.lastAnswers = 1ms;
    startRun();
    ASSERT_TRUE(waitUntil([&] { return service.count(u"open"_s) == 1; }));
    play(1);
    stopAndWait();
    ASSERT_TRUE(waitUntil([&] { return service.count(u"closed"_s) == 1; }));
    EXPECT_EQ(service.count(u"audio"_s), 0);
    EXPECT_FALSE(log.contains(u"✅ Direct Engine AssemblyAIDirectEngine verbunden"_s));
}

TEST_F(CloudEngineRun, outlivesAServiceThatIsUnplugged) {
    ServicePeer service(u"streaming_service.py"_s, {u"deepgram"_s});
    use(u"deepgram"_s, service, service, {.streamRequest = 1h, .streamFarewell = 1h});
    startRun();
    play(1);
    ASSERT_TRUE(waitUntil([&] { return service.count(u"audio"_s) == 12; }));
    service.send(deepgramResult(u"eins"_s));
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 2; }));
    service.command({{u"abort"_s, true}});
    ASSERT_TRUE(waitUntil([&] { return manager->hasEngineError(); }));
    play(1);
    stopAndWait(); // Waits for no answer and no farewell.
    EXPECT_EQ(log.count(u"📋 Direct Engine Status: [error] Deepgram disconnected"_s), 1);
    EXPECT_TRUE(
        onlyFile(u"transcript_*.txt"_s).endsWith(u"Original: eins\nTranslation: eins\n\n"_s));
}

TEST_F(CloudEngineRun, givesUpAServiceThatIsSilentAtTheStop) {
    ServicePeer service(u"streaming_service.py"_s, {u"deepgram"_s});
    use(u"deepgram"_s, service, service, {.streamStall = 1h, .streamFarewell = 1h});
    timings.lastAnswers = 1ms;
    startRun();
    play(1);
    ASSERT_TRUE(waitUntil([&] { return service.count(u"audio"_s) == 12; }));
    service.freeze();
    play(60);
    stopAndWait();
    EXPECT_TRUE(log.contains(u"⚠️ Letzte Ergebnisse kamen nicht rechtzeitig"_s));
}

TEST_F(CloudEngineRun, stopsAtOnceDuringARequest) {
    ServicePeer service(u"http_service.py"_s);
    askForAChunk(service);
    manager->stopCaptureSync();
    service.command({{u"always"_s, true}, {u"body"_s, azureResult(u"late"_s)}});
    test::drainEvents();
    EXPECT_TRUE(fannedOut.isEmpty());
    EXPECT_TRUE(log.lines().filter(u"Fehler"_s).isEmpty());
}

TEST_F(CloudEngineRun, bringsTheResultOfARequestThatAGracefulStopInterrupts) {
    ServicePeer service(u"http_service.py"_s);
    askForAChunk(service);
    manager->stopCapture({});
    EXPECT_TRUE(fannedOut.isEmpty());
    service.command({{u"always"_s, true}, {u"body"_s, azureResult(u"last words"_s)}});
    stopAndWait();
    EXPECT_EQ(fannedOut.value(0), u"published: last words|last words"_s);
}

TEST_F(CloudEngineRun, sendsTheChunksThatWaitAtAGracefulStop) {
    ServicePeer service(u"http_service.py"_s);
    letAChunkWaitBehindTwo(service);
    manager->stopCapture({});
    EXPECT_EQ(service.count(u"request"_s), 2);
    service.command({{u"always"_s, true}, {u"body"_s, azureResult(u"last words"_s)}});
    stopAndWait();
    EXPECT_EQ(fannedOut.size(), 6);
    EXPECT_EQ(service.count(u"request"_s), 3);
}

TEST_F(CloudEngineRun, dropsTheChunksThatWaitAtAnImmediateStop) {
    ServicePeer service(u"http_service.py"_s);
    letAChunkWaitBehindTwo(service);
    manager->stopCapture({});   // Would still send it,
    manager->stopCaptureSync(); // were it not for this.
    service.command({{u"always"_s, true}, {u"body"_s, azureResult(u"late"_s)}});
    ServicePeer next(u"http_service.py"_s);
    askForAChunk(next);
    EXPECT_EQ(service.count(u"request"_s), 2);
    EXPECT_TRUE(fannedOut.isEmpty());
}

TEST_F(CloudEngineRun, keepsTwoRequestsUnderWayAndTheirAnswersInOrder) {
    ServicePeer service(u"http_service.py"_s);
    letAChunkWaitBehindTwo(service);
    EXPECT_EQ(service.count(u"request"_s), 2);
    const auto answer = [](int id, const QString& text) {
        return QJsonObject{{u"answer"_s, id}, {u"body"_s, azureResult(text)}};
    };
    service.command(answer(1, u"zwei"_s));
    ASSERT_TRUE(waitUntil([&] { return service.count(u"answered"_s) == 1; }));
    test::drainEvents();
    service.command(answer(0, u"eins"_s));
    ASSERT_TRUE(waitUntil([&] { return service.count(u"request"_s) == 3; }));
    service.command(answer(2, u"drei"_s));
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 6; }));
    EXPECT_EQ(fannedOut.filter(u"published"_s),
              (QStringList{u"published: eins|eins"_s, u"published: zwei|zwei"_s,
                           u"published: drei|drei"_s}));
}

TEST_F(CloudEngineRun, keepsResultsInOrderWhoseTranslationsOvertakeEachOther) {
    ServicePeer service(u"streaming_service.py"_s, {u"deepgram"_s});
    ServicePeer translation(u"http_service.py"_s);
    use(u"deepgram"_s, service, translation);
    settings.googleApiKey.set(u"SECRET"_s);
    startRun();
    play(1);
    ASSERT_TRUE(waitUntil([&] { return service.count(u"audio"_s) == 12; }));
    service.send(deepgramResult(u"eins"_s));
    ASSERT_TRUE(waitUntil([&] { return translation.count(u"request"_s) == 1; }));
    service.send(deepgramResult(u"zwei"_s));
    ASSERT_TRUE(waitUntil([&] { return translation.count(u"request"_s) == 2; }));
    const auto answer = [&](int id, const QString& text) {
        translation.command(
            {{u"answer"_s, id},
             {u"body"_s, uR"({"data":{"translations":[{"translatedText":"%1"}]}})"_s.arg(text)}});
    };
    answer(1, u"two"_s);
    ASSERT_TRUE(waitUntil([&] { return translation.count(u"answered"_s) == 1; }));
    test::drainEvents();
    answer(0, u"one"_s);
    ASSERT_TRUE(waitUntil([&] { return fannedOut.size() == 4; }));
    stopAndWait();
    EXPECT_EQ(fannedOut.filter(u"published"_s),
              (QStringList{u"published: eins|one"_s, u"published: zwei|two"_s}));
    for (const QString& pattern : {u"transcript_*.txt"_s, u"subtitles_*.srt"_s}) {
        const QString content = onlyFile(pattern);
        EXPECT_EQ(content.count(u"zwei"_s), 1);
        EXPECT_EQ(content.count(u"eins"_s), 1);
        EXPECT_LT(content.indexOf(u"eins"_s), content.indexOf(u"zwei"_s));
    }
}

class EveryStream : public CloudEngineRun, public testing::WithParamInterface<const char*> {};

TEST_P(EveryStream, startsAndStopsTwentyTimes) {
    const QString id = QString::fromLatin1(GetParam());
    ServicePeer service(u"streaming_service.py"_s, {id});
    use(id, service);
    settings.saveTranscript.set(false);
    for (int round = 1; round <= 20; ++round) {
        startRun();
        deliver(480);
        ASSERT_TRUE(waitUntil([&] { return service.count(u"audio"_s) == round; }));
        manager->stopCaptureSync();
        ASSERT_TRUE(waitUntil([&] { return service.count(u"closed"_s) == round; }));
    }
}

INSTANTIATE_TEST_SUITE_P(All, EveryStream, testing::Values("deepgram", "assemblyai"));

class EveryRequest : public CloudEngineRun, public testing::WithParamInterface<const char*> {};

TEST_P(EveryRequest, startsAndStopsTwentyTimesWhileOneIsOutstanding) {
    ServicePeer service(u"http_service.py"_s);
    use(QString::fromLatin1(GetParam()), service);
    settings.googleApiKey.set(u"SECRET"_s);
    settings.saveTranscript.set(false);
    timings.fixedChunk = 1ms;
    makeManager();
    settings.vadEnabled.set(false);
    for (int round = 1; round <= 20; ++round) {
        startRun();
        deliver(20001);
        ASSERT_TRUE(waitUntil([&] { return service.count(u"request"_s) == round; }));
        manager->stopCaptureSync();
    }
    EXPECT_TRUE(fannedOut.isEmpty());
    EXPECT_TRUE(log.lines().filter(u"Fehler"_s).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, EveryRequest, testing::Values("azure", "google_rest"));

} // namespace
} // namespace orv
