#include "TranslationController.h"

#include "Dialogs.h"
#include "Log.h"
#include "Quit.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

TranslationController::TranslationController(ControllerEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment)) {
    captureStart_.setSingleShot(true);
    captureStart_.setTimerType(Qt::PreciseTimer); // A coarse timer may end before its time.
    captureStart_.callOnTimeout(this, [this] {
        environment_.capture.startCapture(run_.source, run_.deviceId, run_.appBundleId);
    });
    sourceChange_.setSingleShot(true);
    sourceChange_.callOnTimeout(this, &TranslationController::followSource);
    const TranslationSettings& settings = environment_.settings;
    watchAll(
        {&settings.audioSourceType, &settings.selectedInputDevice, &settings.selectedAppBundleId},
        this, [this] { sourceChange_.start(0); });
}

bool TranslationController::Run::lacksApp() const {
    return source == AudioSourceType::SingleApp && appBundleId.isEmpty();
}

bool TranslationController::Run::listensLike(const Run& other) const {
    return source == other.source &&
           (source != AudioSourceType::Microphone || deviceId == other.deviceId) &&
           (source != AudioSourceType::SingleApp || appBundleId == other.appBundleId);
}

TranslationController::Run TranslationController::chosenRun() const {
    const TranslationSettings& settings = environment_.settings;
    return {.source = settings.audioSourceType.get(),
            .deviceId = settings.selectedInputDevice.get().value_or(QString()),
            .appBundleId = settings.selectedAppBundleId.get().value_or(QString())};
}

void TranslationController::followSource() {
    ORV_ON_MAIN();
    const Run run = chosenRun();
    if (!isTranslating_ || run.listensLike(run_) || run.lacksApp()) {
        return; // Without an application, what was heard before is heard until one is chosen.
    }
    run_ = run;
    if (!captureStart_.isActive()) {
        logSource(u"🎤 Wechsle Audio-Quelle:"_s);
        environment_.capture.changeSource(run_.source, run_.deviceId, run_.appBundleId);
    }
}

void TranslationController::logSource(const QString& heading) const {
    logLine(QString(heading % u"\n   Quelle: %1\n   Device: %2\n   App: %3"_s.arg(
                                  QString::number(static_cast<int>(run_.source)), run_.deviceId,
                                  run_.appBundleId)));
}

void TranslationController::startTranslation() {
    ORV_ON_MAIN();
    if (isTranslating_ || environment_.quit.isUnderWay()) {
        return;
    }
    if (!environment_.backend.isRunning()) {
        showAlert(u"alert.backend.notready.title"_s, u"alert.backend.notready.msg"_s);
        return;
    }
    const Run run = chosenRun();
    if (run.lacksApp()) {
        showAlert(u"alert.noapp.title"_s, u"alert.noapp.msg"_s);
        return;
    }

    isTranslating_ = true;
    Q_EMIT TranslationStatusChanged(true);
    TranslationSettings& settings = environment_.settings;
    // Assigning writes the key: from here on the store holds the two options as values of its own,
    // also when only registered or built-in defaults answered for them so far.
    settings.speakTranslation.set(bool(settings.speakTranslation.get()));
    settings.showOverlay.set(bool(settings.showOverlay.get()));
    stopOldCapture();
    handOver();
    run_ = run;
    beginCapture();
    Q_EMIT stateChanged();
}

void TranslationController::continueTranslation() {
    ORV_ON_MAIN();
    if (!isTranslating_ || !environment_.backend.isRunning()) {
        return;
    }
    captureStart_.stop();
    stopOldCapture();
    handOver();
    beginCapture();
}

void TranslationController::beginCapture() {
    logSource(u"🎤 Starte Audio-Capture:"_s);
    captureStart_.start(environment_.timings.captureStart);
}

void TranslationController::stopOldCapture() {
    if (environment_.capture.isCapturing()) {
        logLine(u"⚠️ Alte Audio-Capture wird gestoppt...");
        environment_.capture.stopCaptureSync();
    } else if (isStopping_) {
        environment_.capture.stopCaptureSync();
    }
    isStopping_ = false;
    ++stopNumber_;
}

void TranslationController::handOver() {
    const TranslationSettings& settings = environment_.settings;
    const bool autoGain = settings.autoGain.get();
    environment_.capture.setGain(autoGain ? 1.0F : settings.audioGain.get(), autoGain);
    environment_.capture.sendConfig(settings.sourceLang.get(), settings.targetLang.get(),
                                    settings.saveTranscript.get(), settings.showOriginal.get());
}

void TranslationController::stopTranslation() {
    ORV_ON_MAIN();
    if (!isTranslating_) {
        return;
    }
    captureStart_.stop();
    isTranslating_ = false;
    isStopping_ = true;
    Q_EMIT subtitlesEnded();
    Q_EMIT TranslationStatusChanged(false);
    Q_EMIT stateChanged();
    environment_.capture.stopCapture([self = QPointer(this), number = ++stopNumber_] {
        if (self && self->stopNumber_ == number) {
            self->isStopping_ = false;
            Q_EMIT self->stateChanged();
        }
    });
}

void TranslationController::quitApp() {
    ORV_ON_MAIN();
    environment_.quit.fromPanel([this] { stopTranslation(); });
}

void TranslationController::showAlert(const QString& titleKey, const QString& messageKey) {
    environment_.dialogs.showAlert({.style = AlertStyle::Warning,
                                    .title = environment_.text(titleKey),
                                    .message = environment_.text(messageKey),
                                    .buttons = {environment_.text(u"alert.ok"_s)}});
}

} // namespace orv
