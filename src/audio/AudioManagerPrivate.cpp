#include "AudioManagerPrivate.h"

#include "ChunkerLines.h"
#include "DefaultsStore.h"
#include "Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString vadEnabledKey = u"vadEnabled"_s;
const QString vadSilenceDurationKey = u"vadSilenceDuration"_s;
const QString vadThresholdKey = u"vadThreshold"_s;

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
    loadPauseDetection();

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

void AudioManager::Private::loadPauseDetection() {
    if (const auto enabled = env.store.boolean(vadEnabledKey)) {
        chunker.setVadEnabled(*enabled);
    }
    const double duration = env.store.doubleValue(vadSilenceDurationKey).value_or(0);
    if (duration > 0) {
        chunker.setVadSilenceDuration(duration);
    }
    const float threshold = env.store.floatValue(vadThresholdKey).value_or(0);
    if (threshold < 0) {
        chunker.setVadThreshold(threshold);
    }
}

void AudioManager::Private::setVadEnabled(bool enabled) {
    const bool before = chunker.vadEnabled();
    chunker.setVadEnabled(enabled);
    env.store.setBool(vadEnabledKey, enabled);
    logLine(chunkerLines::vadEnabledChanged(before, enabled, chunker.isConnected()));
    if (chunker.isConnected()) {
        startSendTimer();
    }
}

void AudioManager::Private::setVadSilenceDuration(double milliseconds) {
    chunker.setVadSilenceDuration(milliseconds);
    env.store.setDouble(vadSilenceDurationKey, milliseconds);
}

void AudioManager::Private::setVadThreshold(float db) {
    chunker.setVadThreshold(db);
    env.store.setFloat(vadThresholdKey, db);
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
