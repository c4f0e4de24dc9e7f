// The course of a run: opening the link, starting the source, stopping both.

#include "AudioRun.h"

#include "AudioEnvironment.h"
#include "Log.h"
#include "Post.h"
#include "ThreadChecks.h"

#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

AudioRun::AudioRun(const AudioEnvironment& environment,
                   const std::optional<RunConfiguration>& configuration, SoundPath& sound,
                   EventLoopThread& linkThread)
    : environment_(environment)
    , configuration_(configuration)
    , sound_(sound)
    , linkThread_(linkThread)
    , watch_(environment.timings.watch) {
    readyTimer_.setTimerType(Qt::PreciseTimer); // A coarse one may end before its time.
    readyTimer_.setSingleShot(true);
    connect(&readyTimer_, &QTimer::timeout, this, &AudioRun::linkReady);
    lastAnswersTimer_.setSingleShot(true);
    lastAnswersTimer_.setInterval(environment.timings.lastAnswers);
    connect(&lastAnswersTimer_, &QTimer::timeout, this, &AudioRun::giveServicesUp);
}

void AudioRun::start(const SourceChoice& source) {
    ORV_ON_MAIN();
    source_ = source;
    sound_.prepare();
    noteSource();
    const QUrl url(u"ws://127.0.0.1:%1"_s.arg(environment_.backendPort));
    BackendLink::Listener& listener = *this;
    link_ = std::make_unique<BackendLink>(linkThread_, url, listener, BackendLink::Timings{});
    sound_.sender.setLink(link_->sender());
    noteSending();
    logLine(u"🔌 WebSocket zum Backend verbunden (maxMsg=16MB)");
    readyTimer_.start(environment_.timings.linkReady);
}

void AudioRun::linkReady() {
    ORV_ON_MAIN();
    sound_.chunker.setConnected(!isLinkLost_); // It may have failed within the time it was given.
    startDirectEngine();
    if (configuration_) {
        sendConfig();
    }
    sound_.listen(source_);
}

void AudioRun::changeSource(const SourceChoice& source) {
    ORV_ON_MAIN();
    source_ = source;
    if (readyTimer_.isActive()) {
        return; // The link is not ready; the first source has not been opened yet.
    }
    noteSourceChange();
    sound_.sources.start(source.type, source.deviceId, source.appBundleId);
}

void AudioRun::linkFailed(const QString& error) {
    ORV_ON_MAIN();
    logLine(u"❌ WebSocket receive: "_s + error);
    isLinkLost_ = true;
    sound_.chunker.setConnected(false);
    watch_.linkLost(error);
    noteTrouble();
    if (gracefulStop_) {
        gracefulStop_->linkFailed();
    }
}

void AudioRun::stop() {
    ORV_ON_MAIN();
    isStopping_ = true;
    watch_.end();
    readyTimer_.stop();
    finishDirectEngine();
    sound_.stopListening();
    // Behind the last chunk, which may still be on its way through the sender.
    sound_.sender.endPcmSink();
    if (sound_.chunker.isConnected()) {
        beginGracefulStop();
    }
    awaitServices();
}

void AudioRun::beginGracefulStop() {
    GracefulStop::Steps& steps = *this;
    gracefulStop_ = std::make_unique<GracefulStop>(
        steps, GracefulStop::Timings{.lastBuffer = environment_.timings.lastBufferSend,
                                     .flush = environment_.timings.flush,
                                     .stop = environment_.timings.stopSend});
    gracefulStop_->begin(sound_.chunker.takeAll());
}

void AudioRun::sendLastBuffer(std::vector<float>&& samples, BackendLink::Sent sent) {
    ORV_ON_MAIN();
    sound_.sender.sendAudio(std::move(samples), sound_.chunker.currentSampleRate(),
                            std::move(sent));
}

void AudioRun::sendFlush() {
    ORV_ON_MAIN();
    flushCompletionHandler_ = gracefulStop_.get();
    sound_.sender.sendMessage(flushMessage());
}

void AudioRun::sendStop(BackendLink::Sent sent) {
    ORV_ON_MAIN();
    flushCompletionHandler_ = nullptr;
    sound_.sender.sendMessage(stopMessage(), std::move(sent));
}

void AudioRun::stepsDone() {
    ORV_ON_MAIN();
    // Not within the graceful stop, which goes with this.
    post(this, [this] {
        if (gracefulStop_) {
            gracefulStop_.reset();
            awaitServices();
        }
    });
}

/// Services get some time from the stop on, and those that translate what the speech server still
/// recognises once more from its last result on.
void AudioRun::awaitServices() {
    if (isAwaitingServices() && !lastAnswersTimer_.isActive()) {
        lastAnswersTimer_.start();
    }
    endWhenDone();
}

void AudioRun::giveServicesUp() {
    ORV_ON_MAIN();
    logLine(u"⚠️ Letzte Ergebnisse kamen nicht rechtzeitig");
    directEngine_.reset();
    translation_.reset();
    endWhenDone();
}

bool AudioRun::isAwaitingServices() const {
    return directEngine_ || (translation_ && !translation_->isIdle());
}

void AudioRun::endWhenDone() {
    if (!isStopping_ || gracefulStop_ || isAwaitingServices()) {
        return;
    }
    finish();
    Q_EMIT ended();
}

void AudioRun::endAtOnce() {
    ORV_ON_MAIN();
    readyTimer_.stop();
    flushCompletionHandler_ = nullptr;
    gracefulStop_.reset();
    if (std::exchange(useDirectEngine_, false)) {
        directEngine_.reset();
        sound_.sender.endPcmSink();
        sound_.chunker.setRoute(ChunkRoute::Backend);
        logLine(u"🔌 Direct Engine disconnected (sync)");
    }
    directEngine_.reset();
    translation_.reset();
    sound_.stopListening();
    finish();
}

void AudioRun::finish() {
    isOver_ = true;
    lastAnswersTimer_.stop();
    watch_.end();
    link_.reset();
    sound_.clear();
}

} // namespace orv
