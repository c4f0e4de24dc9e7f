// How a microphone is opened.

#include "AudioIngest.h"
#include "CaptureLines.h"
#include "CaptureRun.h"
#include "CaptureSources.h"
#include "Log.h"
#include "SampleRateConverter.h"
#include "ThreadChecks.h"

#include <QPointer>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr std::size_t framesPerBuffer = 4096;

void logLines(const QStringList& lines) {
    for (const QString& line : lines) {
        logLine(line);
    }
}

} // namespace

/// Permission answers come from the platform's object, which outlives this one: they count only
/// while the run that asked is still the one.
template <typename Work>
auto CaptureSources::forThisRun(Work work) {
    return [owner = QPointer(this), run = std::weak_ptr(run_), work](auto answer) {
        if (owner && owner->run_ && run.lock() == owner->run_) {
            (owner.data()->*work)(answer);
        }
    };
}

void CaptureSources::startMicrophoneCapture() {
    logLine(u"🎤 Starte Mikrofon-Capture..."_s);
    logLine(captureLines::deviceChosen(run_->deviceId));
    capture_.microphoneAuthorization(forThisRun(&CaptureSources::microphoneAuthorized));
}

void CaptureSources::microphoneAuthorized(CaptureAuthorization status) {
    switch (status) {
    case CaptureAuthorization::NotDetermined:
        logLine(u"⏳ Mikrofon-Berechtigung wird angefordert..."_s);
        capture_.requestMicrophoneAccess(forThisRun(&CaptureSources::microphoneAccessAnswered));
        return;
    case CaptureAuthorization::Restricted:
    case CaptureAuthorization::Denied:
        logLine(u"❌ Mikrofon-Berechtigung nicht erteilt!"_s);
        logLine(u"   Bitte in Systemeinstellungen > Datenschutz > Mikrofon aktivieren"_s);
        giveUp(CaptureProblem::NoPermission);
        return;
    case CaptureAuthorization::Authorized:
        logLine(u"✓ Mikrofon-Berechtigung vorhanden"_s);
        startMicrophoneCaptureInternal();
        return;
    }
}

void CaptureSources::microphoneAccessAnswered(bool granted) {
    if (granted) {
        startMicrophoneCaptureInternal();
    } else {
        failed(u"❌ Mikrofon-Berechtigung verweigert"_s, CaptureProblem::NoPermission);
    }
}

void CaptureSources::startMicrophoneCaptureInternal() {
    run_->microphone = capture_.createMicrophoneStream(*this);
    if (!run_->microphone) {
        failed(u"❌ Audio Engine konnte nicht erstellt werden"_s, CaptureProblem::NoSoundService);
        return;
    }
    run_->microphone->prepare(run_->deviceId);
}

void CaptureSources::microphonePrepared(const MicrophonePreparation& found) {
    ORV_ON_MAIN();
    if (found.failure == MicrophoneFailure::NoEngine) {
        failed(u"❌ Audio Engine konnte nicht erstellt werden"_s, CaptureProblem::NoSoundService);
        return;
    }
    if (found.failure == MicrophoneFailure::NoInput) {
        failed(u"❌ Kein Input Node verfügbar"_s, CaptureProblem::NoDevice);
        return;
    }
    const bool isTarget = found.deviceFound && found.selectError.isEmpty();
    if (run_->hadTarget && !isTarget) {
        failed(QString(u"⏳ Mikrofon '"_s + run_->deviceId + u"' ist weg, warte auf Rückkehr"_s),
               CaptureProblem::DeviceGone);
        return;
    }
    run_->hadTarget = isTarget && !run_->deviceId.isEmpty();
    run_->format = found.format;
    logLines(captureLines::deviceLookup(found, run_->deviceId));
    logLine(captureLines::hardwareFormat(u"initial"_s, found.initialFormat));
    logLine(captureLines::hardwareFormat(u"nach prepare"_s, found.format));
    if (found.format.sampleRate <= 0 || found.format.channels <= 0) {
        failed(u"❌ Kein gültiges Hardware-Format verfügbar"_s, CaptureProblem::NoDevice);
        return;
    }
    if (choosePath()) {
        startMicrophoneStream();
    }
}

bool CaptureSources::choosePath() {
    const double rate = run_->format.sampleRate;
    const bool converts = SampleRateConverter::isNeeded(rate);
    logLines(captureLines::pathAnalysis(run_->format, converts));
    SampleRateConverter::Creation creation;
    if (converts) {
        creation = SampleRateConverter::create(rate);
        if (!creation.converter) {
            failed(QString(u"❌ Sample-Rate Converter konnte nicht erstellt werden: "_s +
                           creation.error),
                   CaptureProblem::Other, creation.error);
            return false;
        }
        logLine(captureLines::converterCreated(rate));
    }
    ingest_.setSampleRateConverter(std::move(creation.converter));
    return true;
}

void CaptureSources::startMicrophoneStream() {
    run_->microphone->start(framesPerBuffer);
}

void CaptureSources::microphoneStarted(const QString& error) {
    ORV_ON_MAIN();
    if (error.isEmpty()) {
        logLine(captureLines::microphoneStarted(run_->format));
        running();
    } else {
        failed(QString(u"❌ Mikrofon-Engine Fehler: "_s + error), CaptureProblem::Other, error);
    }
}

void CaptureSources::microphoneBuffer(const MicrophoneBuffer& buffer) {
    ingest_.processAudioBufferWithConversion(buffer, AudioIngest::TimePoint::clock::now());
}

void CaptureSources::microphoneStopped(const QString& error) {
    ORV_ON_MAIN();
    logLine(QString(u"❌ Mikrofon-Engine gestoppt: "_s + error));
    retryLater();
    Q_EMIT captureEnded(CaptureProblem::Other, error);
}

} // namespace orv
