// How system and application sound is opened.

#include "AudioIngest.h"
#include "CaptureRun.h"
#include "CaptureSources.h"
#include "Log.h"
#include "ThreadChecks.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void CaptureSources::startScreenCaptureAudio() {
    ScreenCaptureRequest request;
    if (!run_->appBundleId.isEmpty()) {
        request.applicationId = run_->appBundleId;
        request.waitForApplication = run_->hadTarget;
    }
    if (!run_->isQuiet()) {
        logLine(request.applicationId
                    ? QString(u"🔊 Starte App-Audio Capture für: "_s + run_->appBundleId)
                    : u"🔊 Starte System-Audio Capture (alle Apps)"_s);
    }
    run_->screenCapture = capture_.createScreenCaptureStream(*this);
    run_->screenCapture->start(request);
}

void CaptureSources::screenCaptureBlock(std::span<const std::byte> block) {
    ingest_.addScreenCaptureBlock(block, AudioIngest::TimePoint::clock::now());
}

void CaptureSources::screenCaptureStarted(const ScreenCaptureStart& outcome) {
    ORV_ON_MAIN();
    if (!outcome.displayFound) {
        failed(u"❌ Kein Display gefunden"_s, CaptureProblem::NoDevice);
        return;
    }
    const bool wantsApp = !run_->appBundleId.isEmpty();
    if (wantsApp && !outcome.applicationFound) {
        logLine(QString(run_->appBundleId +
                        u" nicht in ScreenCaptureKit gefunden, verwende System-Audio"_s));
    }
    const bool hasApp = wantsApp && outcome.applicationFound;
    if (outcome.contentRead && (outcome.error.isEmpty() || !run_->hasRun)) {
        logLine(hasApp ? QString(u"✓ Filter für App: "_s + outcome.applicationName)
                       : u"✓ Filter für System-Audio (alle Apps)"_s);
    }
    if (outcome.error.isEmpty()) {
        run_->hadTarget = hasApp;
        logLine(u"✅ ScreenCaptureKit Audio gestartet"_s);
        running();
        return;
    }
    const QString failure = u"❌ ScreenCaptureKit Fehler: "_s + outcome.error;
    if (run_->hasRun) {
        failed(failure, CaptureProblem::Other, outcome.error);
        return;
    }
    logLine(failure);
    logLine(u"   Fallback zu Mikrofon..."_s);
    closeStreams();
    run_->source = AudioSourceType::Microphone;
    run_->hadTarget = false;
    startMicrophoneCapture();
}

void CaptureSources::screenCaptureStopped(const QString& error) {
    ORV_ON_MAIN();
    logLine(QString(u"❌ SCStream gestoppt: "_s + error));
    retryLater();
    Q_EMIT captureEnded(CaptureProblem::NoSoundService, error);
}

} // namespace orv
