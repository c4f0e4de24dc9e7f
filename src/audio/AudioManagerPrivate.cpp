#include "AudioManagerPrivate.h"

#include "ChunkerLines.h"
#include "Log.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

Chunker::TimePoint now() {
    return std::chrono::steady_clock::now();
}

} // namespace

AudioManager::Private::Private(AudioManager& manager, AudioEnvironment environment)
    : q(manager)
    , env(std::move(environment))
    , chunker([this](Chunk&& chunk) { sender_.sendChunk(std::move(chunk)); }, now())
    , ingest(chunker)
    , sources(env.capture, ingest)
    , messages_(messageActions())
    , linkThread_(u"io.tavrin.orv.link"_s)
    , sender_([this](std::vector<float>&& samples) { chunker.recycle(std::move(samples)); }) {
    followPauseDetection();

    // Coarse timers may end before their time.
    readyTimer_.setTimerType(Qt::PreciseTimer);
    sendTimer_.setTimerType(Qt::PreciseTimer);
    readyTimer_.setSingleShot(true);
    QObject::connect(&readyTimer_, &QTimer::timeout, &q, [this] { linkReady(); });
    QObject::connect(&sendTimer_, &QTimer::timeout, &q, [this] {
        logLine(chunkerLines::timerFired());
        chunker.sendAudioChunk();
    });
    QObject::connect(&levelUpdateTimer_, &QTimer::timeout, &q, [this] { readMeter(); });
    QObject::connect(&sources, &CaptureSources::listsChanged, &q, &AudioManager::listsChanged);
}

AudioManager::Private::~Private() {
    stopTimers();
    stopSources();
    gracefulStop_.reset();
    directEngine_.reset();
}

void AudioManager::Private::followPauseDetection() {
    const TranslationSettings& settings = env.settings;
    chunker.setVadEnabled(settings.vadEnabled.get());
    chunker.setVadSilenceDuration(settings.vadSilenceDuration.get());
    chunker.setVadThreshold(settings.vadThreshold.get());
    settings.vadEnabled.watch(&q, [this](bool enabled) { setVadEnabled(enabled); });
    settings.vadSilenceDuration.watch(
        &q, [this](double milliseconds) { chunker.setVadSilenceDuration(milliseconds); });
    settings.vadThreshold.watch(&q, [this](float db) { chunker.setVadThreshold(db); });
}

void AudioManager::Private::setVadEnabled(bool enabled) {
    const bool before = chunker.vadEnabled();
    chunker.setVadEnabled(enabled);
    logLine(chunkerLines::vadEnabledChanged(before, enabled, chunker.isConnected()));
    if (chunker.isConnected()) {
        startSendTimer();
    }
}

void AudioManager::Private::startSendTimer() {
    sendTimer_.stop();
    chunker.reset(now());
    if (chunker.vadEnabled()) {
        logLine(chunkerLines::vadActive(chunker.vadSilenceDuration(), chunker.vadThreshold()));
        return;
    }
    sendTimer_.start(env.timings.fixedChunk);
    logLine(chunkerLines::timerStarted());
}

void AudioManager::Private::readMeter() {
    if (ingest.drainMeter(meter)) {
        Q_EMIT q.levelChanged();
    }
}

} // namespace orv
