#include "CaptureSources.h"

#include "AudioIngest.h"
#include "CaptureRun.h"
#include "Log.h"
#include "SampleRateConverter.h"
#include "ThreadChecks.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

std::optional<AudioSourceType> audioSourceFromRaw(int raw) {
    if (raw < 0 || raw > static_cast<int>(AudioSourceType::SingleApp)) {
        return std::nullopt;
    }
    return static_cast<AudioSourceType>(raw);
}

CaptureSources::CaptureSources(AudioCapture& capture, AudioIngest& ingest, CaptureTimings timings,
                               QObject* parent)
    : QObject(parent)
    , capture_(capture)
    , ingest_(ingest)
    , timings_(timings) {
    ORV_ON_MAIN();
    retry_.setSingleShot(true);
    connect(&retry_, &QTimer::timeout, this, &CaptureSources::retry);
    capture_.setListener(this);
    refreshLists();
}

CaptureSources::~CaptureSources() {
    ORV_ON_MAIN();
    capture_.setListener(nullptr);
    run_.reset();
}

bool CaptureSources::isRunning() const {
    return run_ && run_->isRunning;
}

bool CaptureSources::start(AudioSourceType source, const QString& deviceId,
                           const QString& appBundleId) {
    ORV_ON_MAIN();
    stop();
    const int raw = static_cast<int>(source);
    if (!audioSourceFromRaw(raw)) {
        logLine(QString(u"❌ Ungültige Audio-Quelle: "_s + QString::number(raw)));
        return false;
    }
    run_ = std::make_shared<Run>();
    run_->source = source;
    run_->deviceId = deviceId;
    run_->appBundleId = source == AudioSourceType::SingleApp ? appBundleId : QString();
    run_->pause = timings_.firstRetry;
    run_->attempts = 1;
    if (source == AudioSourceType::Microphone) {
        startMicrophoneCapture();
    } else {
        startScreenCaptureAudio();
    }
    Q_EMIT activeChanged();
    return true;
}

void CaptureSources::stop() {
    ORV_ON_MAIN();
    if (!run_) {
        return;
    }
    retry_.stop();
    finishMicrophone();
    if (std::unique_ptr<ScreenCaptureStream> stream = std::move(run_->screenCapture)) {
        ScreenCaptureStream* const leaving = stream.get();
        retired_.push_back(std::move(stream));
        leaving->stop([this, leaving](const QString& error) {
            logLine(error.isEmpty() ? u"✓ ScreenCaptureKit gestoppt"_s
                                    : QString(u"⚠️ SCStream stop error: "_s + error));
            std::erase_if(retired_, [leaving](const auto& one) { return one.get() == leaving; });
        });
    }
    run_.reset();
    Q_EMIT activeChanged();
}

void CaptureSources::running() {
    run_->isRunning = true;
    run_->hasRun = true;
    run_->attempts = 0;
    run_->lastFailure.clear();
    run_->pause = timings_.firstRetry;
    Q_EMIT activeChanged();
    Q_EMIT captureStarted();
}

void CaptureSources::failed(const QString& line, CaptureProblem problem, const QString& reason) {
    if (line != run_->lastFailure) {
        logLine(line);
    }
    run_->lastFailure = line;
    giveUp(problem, reason);
}

void CaptureSources::giveUp(CaptureProblem problem, const QString& reason) {
    if (run_->hasRun) {
        retryLater();
        Q_EMIT captureEnded(problem, reason);
        return;
    }
    closeStreams();
    run_.reset();
    Q_EMIT activeChanged();
    Q_EMIT captureFailed(problem, reason);
}

void CaptureSources::retryLater() {
    closeStreams();
    retry_.start(run_->pause);
    run_->pause = std::min(run_->pause * 2, timings_.longestRetry);
}

void CaptureSources::retry() {
    retry_.stop();
    ++run_->attempts;
    if (run_->source == AudioSourceType::Microphone) {
        startMicrophoneCaptureInternal();
    } else {
        startScreenCaptureAudio();
    }
}

void CaptureSources::captureAvailabilityChanged(bool available) {
    ORV_ON_MAIN();
    if (available && retry_.isActive()) {
        retry();
    }
}

void CaptureSources::finishMicrophone() {
    if (run_->microphone) {
        // The last words: up to a buffer of them waits for its end, and the converter has some.
        run_->microphone->finish();
        ingest_.finishConversion(AudioIngest::TimePoint::clock::now());
        run_->microphone.reset();
    }
    ingest_.setSampleRateConverter(nullptr);
}

void CaptureSources::closeStreams() {
    const bool wasRunning = std::exchange(run_->isRunning, false);
    finishMicrophone();
    run_->screenCapture.reset();
    if (wasRunning) {
        Q_EMIT activeChanged();
    }
}

} // namespace orv
