#include "SoundPath.h"

#include "AudioEnvironment.h"
#include "ChunkerLines.h"
#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <utility>

namespace orv {

namespace {

Chunker::TimePoint now() {
    return std::chrono::steady_clock::now();
}

} // namespace

SoundPath::SoundPath(const AudioEnvironment& environment)
    : chunker([this](Chunk&& chunk) { sender.sendChunk(std::move(chunk)); }, now())
    , ingest(chunker)
    , sources(environment.capture, ingest)
    , environment_(environment)
    , sender(chunker) {
    ORV_ON_MAIN();
    followPauseDetection();

    // Coarse timers may end before their time.
    sendTimer_.setTimerType(Qt::PreciseTimer);
    connect(&sendTimer_, &QTimer::timeout, this, [this] {
        logLine(chunkerLines::timerFired());
        chunker.sendAudioChunk();
    });
    connect(&levelUpdateTimer_, &QTimer::timeout, this, &SoundPath::readMeter);
}

SoundPath::~SoundPath() {
    stopListening();
}

void SoundPath::followPauseDetection() {
    const TranslationSettings& settings = environment_.settings;
    chunker.setVadEnabled(settings.vadEnabled.get());
    chunker.setVadSilenceDuration(settings.vadSilenceDuration.get());
    chunker.setVadThreshold(settings.vadThreshold.get());
    settings.vadEnabled.watch(this, [this](bool enabled) { setVadEnabled(enabled); });
    settings.vadSilenceDuration.watch(
        this, [this](double milliseconds) { chunker.setVadSilenceDuration(milliseconds); });
    settings.vadThreshold.watch(this, [this](float db) { chunker.setVadThreshold(db); });
}

void SoundPath::setVadEnabled(bool enabled) {
    ORV_ON_MAIN();
    const bool before = chunker.vadEnabled();
    chunker.setVadEnabled(enabled);
    logLine(chunkerLines::vadEnabledChanged(before, enabled, chunker.isConnected()));
    if (chunker.isConnected()) {
        startSendTimer();
    }
}

void SoundPath::setGain(float gain, bool autoGain) {
    ORV_ON_MAIN();
    requestedGain_ = gain;
    requestedAutoGain_ = autoGain;
}

void SoundPath::prepare() {
    ORV_ON_MAIN();
    chunker.clear();
    chunker.setRoute(ChunkRoute::Backend);
    chunker.setCurrentSampleRate(48000);
    ingest.setStreamTap({});
}

void SoundPath::listen(const SourceChoice& source) {
    ORV_ON_MAIN();
    ingest.pipeline().setGain(requestedGain_);
    ingest.pipeline().setAutoGain(requestedAutoGain_);
    levelUpdateTimer_.start(environment_.timings.meterRefresh);
    sources.start(source.type, source.deviceId, source.appBundleId);
    startSendTimer();
}

void SoundPath::startSendTimer() {
    sendTimer_.stop();
    chunker.reset(now());
    if (chunker.vadEnabled()) {
        logLine(chunkerLines::vadActive(chunker.vadSilenceDuration(), chunker.vadThreshold()));
        return;
    }
    sendTimer_.start(environment_.timings.fixedChunk);
    logLine(chunkerLines::timerStarted());
}

void SoundPath::readMeter() {
    ORV_ON_MAIN();
    if (const auto loudest = ingest.drainMeter(meter)) {
        Q_EMIT levelChanged();
        Q_EMIT soundArrived(*loudest > meterLevel(chunker.vadThreshold()));
    }
}

void SoundPath::stopListening() {
    ORV_ON_MAIN();
    sendTimer_.stop();
    levelUpdateTimer_.stop();
    sources.stop();
    ingest.setStreamTap({});
}

void SoundPath::clear() {
    ORV_ON_MAIN();
    sendTimer_.stop(); // A setting may have started it again since the capture ended.
    sender.setLink({});
    sender.setChunkSent({});
    chunker.setConnected(false);
    chunker.clear();
    ingest.drainMeter(meter);
    meter.reset();
    ingest.pipeline().setGain(1.0F);
}

} // namespace orv
