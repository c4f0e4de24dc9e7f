// The course of a run: opening the link, starting the source, stopping both.

#include "AudioManagerPrivate.h"
#include "Log.h"

#include <QUrl>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void AudioManager::Private::startCapture(AudioSourceType source, const QString& deviceId,
                                         const QString& appBundleId) {
    if (capturing || gracefulStop_) {
        stopCaptureSync();
    }
    endedDirectEngine_.reset();
    translation_.reset();
    currentSource_ = source;
    currentDeviceId_ = deviceId;
    currentAppBundleId_ = appBundleId;
    capturing = true;
    chunker.clear();
    chunker.setRoute(ChunkRoute::Backend);
    chunker.setCurrentSampleRate(48000);
    ingest.setStreamTap({});
    connectToBackend();
    Q_EMIT q.captureStateChanged();
}

void AudioManager::Private::connectToBackend() {
    const QUrl url(u"ws://127.0.0.1:%1"_s.arg(env.backendPort));
    link_ = std::make_unique<BackendLink>(
        linkThread_, url,
        BackendLink::Handlers{.message =
                                  std::bind_front(&BackendMessageHandler::handle, &messages_),
                              .failed = [this](const QString& error) { linkFailed(error); }},
        BackendLink::Timings{});
    sender_.setLink(link_->sender());
    logLine(u"🔌 WebSocket zum Backend verbunden (maxMsg=16MB)");
    readyTimer_.start(env.timings.linkReady);
}

void AudioManager::Private::linkReady() {
    chunker.setConnected(true);
    startDirectEngine();
    // A new link knows nothing: it gets the parked configuration, else the one in force.
    if (const auto configuration = nextConfiguration()) {
        pendingConfig.reset();
        sendConfig(*configuration);
    }
    startSource();
    startSendTimer();
}

void AudioManager::Private::linkFailed(const QString& error) {
    logLine(u"❌ WebSocket receive: "_s + error);
    chunker.setConnected(false);
    if (gracefulStop_) {
        gracefulStop_->linkFailed();
    }
}

void AudioManager::Private::startSource() {
    SamplePipeline& pipeline = ingest.pipeline();
    pipeline.setGain(requestedGain);
    pipeline.setAutoGain(requestedAutoGain);
    levelUpdateTimer_.start(env.timings.meterRefresh);
    sources.start(currentSource_, currentDeviceId_, currentAppBundleId_);
}

void AudioManager::Private::stopCapture(std::function<void()> done) {
    logLine(u"🛑 Stoppe Audio-Capture");
    if (done) {
        stopCallbacks_.push_back(std::move(done));
    }
    if (gracefulStop_) {
        return; // Already on its way; everyone is told at its end.
    }
    stopTimers();
    finishDirectEngine();
    stopSources();
    endDirectEngine();
    if (chunker.isConnected()) {
        beginGracefulStop();
    } else {
        finishRun();
    }
}

void AudioManager::Private::stopCaptureSync() {
    logLine(u"🛑 Stoppe Audio-Capture (sync)");
    stopTimers();
    gracefulStop_.reset();
    if (directEngine_) {
        directEngine_.reset();
        sender_.endPcmSink();
        chunker.setRoute(ChunkRoute::Backend);
        logLine(u"🔌 Direct Engine disconnected (sync)");
    }
    endedDirectEngine_.reset();
    translation_.reset();
    stopSources();
    finishRun();
}

void AudioManager::Private::stopTimers() {
    readyTimer_.stop();
    sendTimer_.stop();
    levelUpdateTimer_.stop();
}

void AudioManager::Private::stopSources() {
    sources.stop();
    // Whatever the source still delivered is in the buffer now: nothing comes after `stop`.
    ingest.setStreamTap({});
}

void AudioManager::Private::finishDirectEngine() {
    if (!directEngine_) {
        return;
    }
    directEngine_->finish();
    endedDirectEngine_ = std::move(directEngine_);
    chunker.setRoute(ChunkRoute::Backend);
    logLine(u"🔌 Direct Engine disconnected");
}

void AudioManager::Private::endDirectEngine() {
    if (!endedDirectEngine_) {
        return;
    }
    // Behind the last chunk, which may still be on its way through the sender.
    sender_.endPcmSink([this, session = endedDirectEngine_.get(), target = target_.handle()] {
        target.post([this, session] {
            if (endedDirectEngine_.get() == session) {
                session->end();
            }
        });
    });
}

void AudioManager::Private::beginGracefulStop() {
    auto remainder = std::make_shared<std::vector<float>>(chunker.takeAll());
    const std::size_t count = remainder->size();
    gracefulStop_ = std::make_unique<GracefulStop>(
        count,
        GracefulStop::Actions{
            .sendLastBuffer =
                [this, remainder](GracefulStop::Actions::Sent sent) {
                    sender_.sendAudio(std::move(*remainder), chunker.currentSampleRate(),
                                      std::move(sent));
                },
            .sendFlush = [this] { sender_.sendMessage(flushMessage()); },
            .sendStop =
                [this](GracefulStop::Actions::Sent sent) {
                    sender_.sendMessage(stopMessage(),
                                        [sent = std::move(sent)](const QString&) { sent(); });
                },
            .done = [this] { target_.handle().post([this] { endGracefulStop(); }); }},
        GracefulStop::Timings{.lastBuffer = env.timings.lastBufferSend,
                              .flush = env.timings.flush,
                              .stop = env.timings.stopSend});
}

void AudioManager::Private::endGracefulStop() {
    if (gracefulStop_ && gracefulStop_->isDone()) {
        gracefulStop_.reset();
        finishRun();
    }
}

void AudioManager::Private::finishRun() {
    sendTimer_.stop();
    link_.reset();
    sender_.setLink({});
    chunker.setConnected(false);
    chunker.clear();
    capturing = false;
    resetPublishedState();
    Q_EMIT q.captureStateChanged();
    runStopCallbacks();
}

void AudioManager::Private::resetPublishedState() {
    ingest.drainMeter(meter);
    meter.reset();
    ingest.pipeline().setGain(1.0F);
    isModelLoading = false;
    Q_EMIT q.levelChanged();
    Q_EMIT q.statusChanged();
}

void AudioManager::Private::runStopCallbacks() {
    for (auto& done : std::exchange(stopCallbacks_, {})) {
        target_.handle().post(std::move(done));
    }
}

} // namespace orv
