#include "AudioManager.h"

#include "AudioRun.h"
#include "Log.h"
#include "Post.h"
#include "SoundPath.h"
#include "ThreadChecks.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

AudioManager::AudioManager(AudioEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , linkThread_(u"io.tavrin.orv.link"_s)
    , sound_(std::make_unique<SoundPath>(environment_)) {
    ORV_ON_MAIN();
    connect(sound_.get(), &SoundPath::levelChanged, this, &AudioManager::levelChanged);
    connect(&sound_->sources, &CaptureSources::listsChanged, this, &AudioManager::listsChanged);
    connect(&progressTimer_, &QTimer::timeout, this, &AudioManager::publishProgress);
}

AudioManager::~AudioManager() = default;

QList<AudioDevice> AudioManager::inputDevices() const {
    ORV_ON_MAIN();
    return sound_->sources.inputDevices();
}

QList<RunningApp> AudioManager::runningApps() const {
    ORV_ON_MAIN();
    return sound_->sources.runningApps();
}

QList<RunningApp> AudioManager::capturableApps() const {
    ORV_ON_MAIN();
    return sound_->sources.capturableApps();
}

bool AudioManager::isBlackHoleInstalled() const {
    ORV_ON_MAIN();
    return sound_->sources.isBlackHoleInstalled();
}

bool AudioManager::hasScreenCapturePermission() const {
    ORV_ON_MAIN();
    return sound_->sources.hasScreenCapturePermission();
}

float AudioManager::audioLevel() const {
    ORV_ON_MAIN();
    return sound_->meter.audioLevel();
}

float AudioManager::peakLevel() const {
    ORV_ON_MAIN();
    return sound_->meter.peakLevel();
}

bool AudioManager::vadEnabled() const {
    ORV_ON_MAIN();
    return sound_->chunker.vadEnabled();
}

double AudioManager::vadSilenceDuration() const {
    ORV_ON_MAIN();
    return sound_->chunker.vadSilenceDuration();
}

float AudioManager::vadThreshold() const {
    ORV_ON_MAIN();
    return sound_->chunker.vadThreshold();
}

bool AudioManager::isConnected() const {
    ORV_ON_MAIN();
    return sound_->chunker.isConnected();
}

bool AudioManager::isCapturing() const {
    ORV_ON_MAIN();
    return run_ && !run_->isOver();
}

void AudioManager::refreshLists() {
    ORV_ON_MAIN();
    sound_->sources.refreshLists();
}

void AudioManager::setGain(float gain, bool autoGain) {
    ORV_ON_MAIN();
    sound_->setGain(gain, autoGain);
}

void AudioManager::sendConfig(const QString& sourceLang, const QString& targetLang,
                              bool saveTranscript, bool showOriginal) {
    ORV_ON_MAIN();
    configuration_ = RunConfiguration{sourceLang, targetLang, saveTranscript, showOriginal};
    if (isConnected()) {
        run_->sendConfig();
    } else {
        logLine(u"⚠️ WebSocket nicht verbunden, Config wird später gesendet");
    }
}

void AudioManager::startCapture(AudioSourceType source, const QString& deviceId,
                                const QString& appBundleId) {
    ORV_ON_MAIN();
    if (isCapturing()) {
        stopCaptureSync();
    }
    makeRun();
    run_->start({source, deviceId, appBundleId});
    progressTimer_.start(environment_.timings.progressRefresh);
    publishProgress();
    Q_EMIT captureStateChanged();
}

void AudioManager::changeSource(AudioSourceType source, const QString& deviceId,
                                const QString& appBundleId) {
    ORV_ON_MAIN();
    if (isCapturing() && !run_->isStopping()) {
        run_->changeSource({source, deviceId, appBundleId});
        publishProgress();
    }
}

void AudioManager::makeRun() {
    run_.reset(); // No run gets a result of another.
    backendNews_.beginRun();
    run_ = std::make_unique<AudioRun>(environment_, configuration_, *sound_, linkThread_);
    connect(run_.get(), &AudioRun::resultArrived, this, &AudioManager::publishResult);
    connect(run_.get(), &AudioRun::backendStatusArrived, this, &AudioManager::publishBackendStatus);
    connect(run_.get(), &AudioRun::engineStatusArrived, this, &AudioManager::publishEngineStatus);
    connect(run_.get(), &AudioRun::serviceServed, this, &AudioManager::noteService);
    connect(run_.get(), &AudioRun::ended, this, &AudioManager::finishRun);
    connect(run_.get(), &AudioRun::troubleChanged, this, &AudioManager::publishProgress);
    // Whoever shows a notice must not hold up what it is about.
    connect(run_.get(), &AudioRun::noticeRaised, this, [this](const AudioNotice& notice) {
        post(this, [this, notice] { Q_EMIT noticeRaised(notice); });
    });
}

void AudioManager::stopCapture(std::function<void()> done) {
    ORV_ON_MAIN();
    logLine(u"🛑 Stoppe Audio-Capture");
    if (done) {
        stopCallbacks_.push_back(std::move(done));
    }
    if (!isCapturing()) {
        finishRun();
    } else if (!run_->isStopping()) { // Else everyone is told at its end.
        run_->stop();
        publishProgress();
    }
}

void AudioManager::stopCaptureSync() {
    ORV_ON_MAIN();
    logLine(u"🛑 Stoppe Audio-Capture (sync)");
    if (isCapturing()) {
        run_->endAtOnce();
    }
    run_.reset();
    finishRun();
}

void AudioManager::publishResult(const Result& result) {
    currentResult_ = result;
    Q_EMIT resultChanged();
    Q_EMIT resultArrived(result);
}

void AudioManager::publishBackendStatus(const StatusMessage& status) {
    backendNews_.take(status);
    isModelLoading_ = status.status == u"model_loading";
    if (status.status == u"error") {
        hasEngineError_ = true;
    } else if (status.status == u"engine_loading" || status.status == u"engine" ||
               status.status == u"model_loaded") {
        hasEngineError_ = false;
    }
    Q_EMIT statusChanged();
}

void AudioManager::publishEngineStatus(const QString& status, const QString& message) {
    backendNews_.latest = {.status = status, .message = message, .version = {}};
    if (status == u"error") {
        hasEngineError_ = true;
    } else if (status == u"connected") {
        hasEngineError_ = false;
    }
    Q_EMIT statusChanged();
}

void AudioManager::noteService(const Result& result) {
    const BackendNews before = backendNews_;
    backendNews_.serviceServes(result);
    if (backendNews_ != before) {
        hasEngineError_ = false;
        Q_EMIT statusChanged();
    }
}

void AudioManager::publishProgress() {
    const RunProgress now = run_ ? run_->progress() : RunProgress();
    if (!now.isOn) {
        progressTimer_.stop();
    }
    if (now != progress_) {
        progress_ = now;
        Q_EMIT progressChanged();
    }
}

void AudioManager::finishRun() {
    isModelLoading_ = false;
    publishProgress();
    Q_EMIT levelChanged();
    Q_EMIT statusChanged();
    Q_EMIT captureStateChanged();
    for (auto& done : std::exchange(stopCallbacks_, {})) {
        post(this, std::move(done));
    }
}

} // namespace orv
