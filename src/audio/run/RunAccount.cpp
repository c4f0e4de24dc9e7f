// What is noted of a run: how far its sound gets, and what keeps it from getting there.

#include "AudioRun.h"
#include "ThreadChecks.h"

namespace orv {

namespace {

RunWatch::TimePoint now() {
    return RunWatch::TimePoint::clock::now();
}

} // namespace

RunProgress AudioRun::progress() const {
    ORV_ON_MAIN();
    return watch_.progress(now());
}

void AudioRun::noteSource() {
    watch_.begin(now());
    connect(&sound_, &SoundPath::soundArrived, this, [this](bool isSpeech) {
        watch_.soundArrived(isSpeech, now());
        if (useDirectEngine_ && directEngine_->isStreaming()) {
            watch_.soundStreamed(now());
        }
    });
    connect(&sound_.sources, &CaptureSources::captureStarted, this, [this] {
        watch_.captureStarted(now());
        noteTrouble();
    });
    connect(&sound_.sources, &CaptureSources::captureEnded, this,
            [this](CaptureProblem problem, const QString& reason) {
                watch_.captureEnded(problem, reason);
                noteTrouble();
            });
    connect(&sound_.sources, &CaptureSources::captureFailed, this,
            [this](CaptureProblem problem, const QString& reason) {
                watch_.captureFailed(problem, reason);
                noteTrouble();
            });
}

void AudioRun::noteSourceChange() {
    watch_.sourceChanged(now());
}

void AudioRun::noteSending() {
    sound_.sender.setChunkSent(
        [this, target = target_.handle()] { target.post([this] { watch_.chunkSent(now()); }); });
}

void AudioRun::noteResult() {
    watch_.resultArrived(now());
}

void AudioRun::receiveProcessed() {
    ORV_ON_MAIN();
    watch_.chunkAnswered(now());
}

void AudioRun::noteEngine(const QString& status, const QString& message, RunTrouble onError) {
    const bool serves = status == u"connected" || status == u"engine" ||
                        status == u"engine_loading" || status == u"model_loaded";
    if (status == u"error" && onError == RunTrouble::EngineLost) {
        watch_.engineLost(message);
    } else if (status == u"error") {
        watch_.engineRefused(message);
    } else if (serves) {
        watch_.engineServes();
    } else {
        return;
    }
    noteTrouble();
}

void AudioRun::noteTrouble() {
    Q_EMIT troubleChanged();
}

} // namespace orv
