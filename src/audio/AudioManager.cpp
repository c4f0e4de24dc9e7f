#include "AudioManager.h"

#include "AudioManagerPrivate.h"

#include <utility>

namespace orv {

AudioManager::AudioManager(AudioEnvironment environment, QObject* parent)
    : QObject(parent)
    , d_(std::make_unique<Private>(*this, std::move(environment))) {}

AudioManager::~AudioManager() = default;

QList<AudioDevice> AudioManager::inputDevices() const {
    return d_->sources.inputDevices();
}

QList<RunningApp> AudioManager::runningApps() const {
    return d_->sources.runningApps();
}

QList<RunningApp> AudioManager::capturableApps() const {
    return d_->sources.capturableApps();
}

bool AudioManager::isBlackHoleInstalled() const {
    return d_->sources.isBlackHoleInstalled();
}

bool AudioManager::hasScreenCapturePermission() const {
    return d_->sources.hasScreenCapturePermission();
}

QString AudioManager::currentOriginal() const {
    return d_->currentResult.original;
}

QString AudioManager::currentTranslation() const {
    return d_->currentResult.translation;
}

QString AudioManager::backendStatus() const {
    return d_->backendStatus;
}

bool AudioManager::isModelLoading() const {
    return d_->isModelLoading;
}

bool AudioManager::hasEngineError() const {
    return d_->hasEngineError;
}

float AudioManager::audioLevel() const {
    return d_->meter.audioLevel();
}

float AudioManager::peakLevel() const {
    return d_->meter.peakLevel();
}

bool AudioManager::vadEnabled() const {
    return d_->chunker.vadEnabled();
}

double AudioManager::vadSilenceDuration() const {
    return d_->chunker.vadSilenceDuration();
}

float AudioManager::vadThreshold() const {
    return d_->chunker.vadThreshold();
}

void AudioManager::refreshLists() {
    d_->sources.refreshLists();
}

void AudioManager::setGain(float gain, bool autoGain) {
    d_->requestedGain = gain;
    d_->requestedAutoGain = autoGain;
}

void AudioManager::sendConfig(const QString& sourceLang, const QString& targetLang,
                              bool saveTranscript, bool showOriginal) {
    d_->sendConfig({sourceLang, targetLang, saveTranscript, showOriginal});
}

void AudioManager::startCapture(AudioSourceType source, const QString& deviceId,
                                const QString& appBundleId) {
    d_->startCapture(source, deviceId, appBundleId);
}

bool AudioManager::isCapturing() const {
    return d_->capturing;
}

bool AudioManager::isConnected() const {
    return d_->chunker.isConnected();
}

void AudioManager::stopCapture(std::function<void()> done) {
    d_->stopCapture(std::move(done));
}

void AudioManager::stopCaptureSync() {
    d_->stopCaptureSync();
}

} // namespace orv
