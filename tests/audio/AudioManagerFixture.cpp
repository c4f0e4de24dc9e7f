#include "AudioManagerFixture.h"

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

/// All engines, the direct ones replaced by whatever `engine` is when a run begins.
EngineCatalogue catalogueOf(const std::shared_ptr<FakeEngine>& engine) {
    const EngineCatalogue real;
    std::vector<EngineDescriptor> all(real.engines().begin(), real.engines().end());
    for (EngineDescriptor& one : all) {
        if (one.make) {
            one.make = [&engine](const ServiceEndpoints&, const EngineTimings&) { return engine; };
        }
    }
    return EngineCatalogue(std::move(all));
}

} // namespace

AudioManagerFixture::AudioManagerFixture() {
    timings.linkReady = 1ms;
    timings.lastBufferSend = 1h;
    timings.flush = 1h;
    timings.stopSend = 1h;
    timings.lastAnswers = 1h;
    timings.fixedChunk = 1h;
    timings.meterRefresh = 1ms;
    MicrophonePreparation microphone;
    microphone.initialFormat = {48000, 1};
    microphone.format = {48000, 1};
    capture.answers().preparation = microphone;
}

void AudioManagerFixture::makeManager() {
    if (engine) {
        engines = catalogueOf(engine);
    }
    manager = std::make_unique<AudioManager>(
        AudioEnvironment{.settings = settings,
                         .capture = capture,
                         .engines = engines,
                         .transcriptFolder = folder.filePath(u"output"_s),
                         .endpoints = endpoints,
                         .engineTimings = engineTimings,
                         .backendPort = backend.port(),
                         .timings = timings});
    QObject::connect(manager.get(), &AudioManager::noticeRaised, manager.get(),
                     [this](const AudioNotice& notice) { notices.append(notice); });
    QObject::connect(manager.get(), &AudioManager::resultChanged, manager.get(), [this] {
        fannedOut.append(u"published: "_s + manager->currentOriginal() + u"|"_s +
                         manager->currentTranslation());
    });
    QObject::connect(
        manager.get(), &AudioManager::resultArrived, manager.get(), [this](const Result& result) {
            fannedOut.append(u"announced: "_s + result.original + u"|"_s + result.translation);
        });
}

void AudioManagerFixture::startRun() {
    if (!manager) {
        makeManager();
    }
    manager->sendConfig(u"en"_s, u"es"_s, false, false);
    manager->startCapture(AudioSourceType::Microphone, {}, {});
    ASSERT_TRUE(waitUntil([this] { return capture.isMicrophoneRunning(); }));
    ASSERT_TRUE(waitUntil([this] { return !backend.messages(u"config"_s).isEmpty(); }));
}

void AudioManagerFixture::deliver(std::size_t count, float value) {
    const std::vector<float> samples(count, value);
    ASSERT_TRUE(capture.deliver({.firstChannel = samples.data(), .frames = count, .stride = 1}));
}

QList<QByteArray> AudioManagerFixture::receivedAudio() {
    QList<QByteArray> all;
    for (const QJsonObject& message : backend.messages(u"audio"_s)) {
        all.append(QByteArray::fromBase64(message[u"data"_s].toString().toLatin1()));
    }
    return all;
}

void AudioManagerFixture::stopAndWait() {
    bool done = false;
    manager->stopCapture([&done] { done = true; });
    ASSERT_TRUE(waitUntil([&done] { return done; }));
}

} // namespace orv::test
