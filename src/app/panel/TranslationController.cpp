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
}

void TranslationController::startTranslation() {
    ORV_ON_MAIN();
    if (isTranslating_) {
        return;
    }
    if (!environment_.backend.isRunning()) {
        showAlert(u"alert.backend.notready.title"_s, u"alert.backend.notready.msg"_s);
        return;
    }
    TranslationSettings& settings = environment_.settings;
    const Run run = {.source = settings.audioSourceType.get(),
                     .deviceId = settings.selectedInputDevice.get().value_or(QString()),
                     .appBundleId = settings.selectedAppBundleId.get().value_or(QString())};
    if (run.source == AudioSourceType::SingleApp && run.appBundleId.isEmpty()) {
        showAlert(u"alert.noapp.title"_s, u"alert.noapp.msg"_s);
        return;
    }

    isTranslating_ = true;
    Q_EMIT TranslationStatusChanged(true);
    // Assigning writes the key: from here on the store holds the two options as values of its own,
    // also when only registered or built-in defaults answered for them so far.
    settings.speakTranslation.set(bool(settings.speakTranslation.get()));
    settings.showOverlay.set(bool(settings.showOverlay.get()));
    stopOldCapture();
    handOver();
    run_ = run;
    logLine(u"🎤 Starte Audio-Capture:\n   Quelle: %1\n   Device: %2\n   App: %3"_s.arg(
        QString::number(static_cast<int>(run.source)), run.deviceId, run.appBundleId));
    captureStart_.start(environment_.timings.captureStart);
    Q_EMIT stateChanged();
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
