#include "PulseScreenCapture.h"

#include "ApplicationIdentity.h"
#include "Post.h"
#include "ThreadChecks.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Two blocks: the machine's sound must not be chopped finer for our sake.
constexpr std::size_t fragmentFrames = 2 * BlockMixer::blockFrames;

BlockMixer::Time now() {
    return std::chrono::steady_clock::now();
}

} // namespace

/// One of the recordings that are mixed.
class PulseScreenCapture::Tap final : private PulseRecordStream::Listener {
  public:
    Tap(PulseScreenCapture& owner, std::uint32_t id)
        : owner_(owner)
        , id_(id) {}

    /// False, and the connection's last error, when the recording cannot even be asked for.
    bool open(const PulseRecording& recording) {
        stream_ = PulseRecordStream::open(*owner_.connection_, recording, *this);
        return stream_ != nullptr;
    }

  private:
    void recordingReady() override { owner_.streamReady(); }

    void recorded(const float* samples, std::size_t frames) override {
        owner_.mixer_->push(id_, samples, frames, now());
    }

    void recordingEnded(const QString& error) override {
        owner_.streamEnded(id_, error); // Destroys this object.
    }

    PulseScreenCapture& owner_;
    const std::uint32_t id_;
    std::unique_ptr<PulseRecordStream> stream_;
};

PulseScreenCapture::PulseScreenCapture(std::shared_ptr<PulseConnection> connection,
                                       std::shared_ptr<RunningAppScanner> scanner,
                                       Listener& listener)
    : connection_(std::move(connection))
    , scanner_(std::move(scanner))
    , listener_(listener)
    , ticker_(connection_->api(), [this] { tick(); })
    , retake_(connection_->api(), [this] { takeUp(); }) {}

PulseScreenCapture::~PulseScreenCapture() {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    release();
}

void PulseScreenCapture::start(const ScreenCaptureRequest& request) {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    release();
    isStopped_ = false;
    request_ = request;
    outcome_ = {};
    outcome_.contentRead = false;
    isStarting_ = true;
    mixer_.emplace(now(), [this](std::span<const float> block) {
        listener_.screenCaptureBlock(std::as_bytes(block));
    });
    connection_->addListener(this);
    if (!request_.applicationId) {
        begin({});
        return;
    }
    scanner_->scan(&context_, [this](const QList<RunningApp>& apps) {
        const PulseLock lockAgain(*connection_);
        if (isStarting_) {
            begin(apps);
        }
    });
}

void PulseScreenCapture::begin(const QList<RunningApp>& runningApps) {
    connection_->whenSettled(this, [this, runningApps](bool ready) {
        if (!ready) {
            failStart(u"Soundserver nicht erreichbar"_s);
        } else if (request_.applicationId) {
            startApplication(runningApps);
        } else {
            takeUpSink();
        }
    });
}

void PulseScreenCapture::startApplication(const QList<RunningApp>& runningApps) {
    connection_->listPlaybacks(this, [this, runningApps](const auto& playbacks) {
        if (!playbacks) {
            failStart(u"Verbindung zum Soundserver verloren"_s);
            return;
        }
        outcome_.contentRead = true;
        const QString& id = *request_.applicationId;
        const qint64 ownProcess = QCoreApplication::applicationPid();
        const auto playing =
            std::find_if(playbacks->begin(), playbacks->end(),
                         [&](const auto& one) { return belongsTo(one, id, ownProcess); });
        const auto running = std::find_if(runningApps.begin(), runningApps.end(),
                                          [&](const auto& app) { return app.bundleId == id; });
        if (playing != playbacks->end()) {
            outcome_.applicationName = applicationOf(*playing, ownProcess)->name;
        } else if (running != runningApps.end()) {
            outcome_.applicationName = running->name;
        } else if (request_.waitForApplication) {
            outcome_.applicationName = id;
        } else {
            outcome_.applicationFound = false;
            request_.applicationId.reset();
            takeUpSink();
            return;
        }
        finishStart();
        takeUpPlaybacks();
    });
}

void PulseScreenCapture::pulseLost() {
    ORV_ON(*connection_);
    if (isStarting_) {
        failStart(u"Verbindung zum Soundserver verloren"_s);
        return;
    }
    post(&context_, [this] {
        if (!isStopped_) {
            listener_.screenCaptureStopped(u"Verbindung zum Soundserver verloren"_s);
        }
    });
    release();
}

void PulseScreenCapture::pulseChanged(PulseChange change) {
    ORV_ON(*connection_);
    const bool concernsApplication =
        change == PulseChange::Playbacks || change == PulseChange::PlaybackMoved;
    const bool concernsSink = change == PulseChange::Server || change == PulseChange::Sinks;
    if (!isStarting_ && (request_.applicationId ? concernsApplication : concernsSink)) {
        takeUp();
    }
}

void PulseScreenCapture::takeUp() {
    if (askingForStreams_) {
        askAgain_ = true;
    } else if (request_.applicationId) {
        takeUpPlaybacks();
    } else {
        takeUpSink();
    }
}

void PulseScreenCapture::takeUpSink() {
    askingForStreams_ = true;
    connection_->findSink(this, "@DEFAULT_SINK@", [this](const auto& found) {
        askingForStreams_ = false;
        if (!found) {
            return;
        }
        outcome_.contentRead = true;
        if (found->empty() && isStarting_) {
            outcome_.displayFound = false;
            failStart(u"Keine Audio-Ausgabe vorhanden"_s);
            return;
        }
        std::map<std::uint32_t, PulseRecording> wanted;
        for (const PulseSink& sink : *found) {
            wanted[sink.index].source = sink.monitorName;
        }
        adjustStreams(wanted);
    });
}

void PulseScreenCapture::takeUpPlaybacks() {
    askingForStreams_ = true;
    connection_->listPlaybacks(this, [this](const auto& playbacks) {
        askingForStreams_ = false;
        if (!playbacks) {
            return;
        }
        std::map<std::uint32_t, PulseRecording> wanted;
        for (const PulsePlayback& playback : *playbacks) {
            if (belongsTo(playback, *request_.applicationId, QCoreApplication::applicationPid())) {
                wanted[playback.index].playback = playback.index;
            }
        }
        adjustStreams(wanted);
    });
}

void PulseScreenCapture::adjustStreams(const std::map<std::uint32_t, PulseRecording>& wanted) {
    for (auto stream = streams_.begin(); stream != streams_.end();) {
        if (wanted.contains(stream->first)) {
            ++stream;
        } else {
            mixer_->removeStream(stream->first);
            stream = streams_.erase(stream);
        }
    }
    for (const auto& [id, recording] : wanted) {
        if (!streams_.contains(id)) {
            openStream(id, recording);
        }
    }
    if (std::exchange(askAgain_, false) && mixer_) {
        takeUp();
    }
}

void PulseScreenCapture::openStream(std::uint32_t id, const PulseRecording& recording) {
    PulseRecording shaped = recording;
    shaped.fragmentFrames = fragmentFrames;
    auto tap = std::make_unique<Tap>(*this, id);
    if (!tap->open(shaped)) {
        streamEnded(id, connection_->lastError());
        return;
    }
    mixer_->addStream(id);
    streams_[id] = std::move(tap);
}

void PulseScreenCapture::streamReady() {
    if (isStarting_) {
        finishStart();
        takeUp(); // Another default may have been chosen meanwhile.
    }
}

void PulseScreenCapture::streamEnded(std::uint32_t id, const QString& error) {
    if (isStarting_) {
        failStart(error);
        return;
    }
    mixer_->removeStream(id);
    streams_.erase(id);
    retake_.schedule(connection_->context(), connection_->options().retake);
}

void PulseScreenCapture::tick() {
    ORV_ON(*connection_);
    mixer_->advance(now());
    ticker_.schedule(connection_->context(), BlockMixer::blockDuration);
}

void PulseScreenCapture::finishStart() {
    tellStarted();
    ticker_.schedule(connection_->context(), BlockMixer::blockDuration);
}

void PulseScreenCapture::failStart(const QString& error) {
    outcome_.error = error;
    tellStarted();
    release();
}

void PulseScreenCapture::tellStarted() {
    isStarting_ = false;
    post(&context_, [this, outcome = outcome_] {
        if (!isStopped_) {
            listener_.screenCaptureStarted(outcome);
        }
    });
}

void PulseScreenCapture::stop(Answer<const QString&> done) {
    ORV_ON_MAIN();
    isStopped_ = true;
    const PulseLock lock(*connection_);
    if (mixer_) {
        mixer_->finish();
    }
    release();
    post(&context_, [done = std::move(done)] { done({}); });
}

void PulseScreenCapture::release() {
    connection_->forget(this);
    connection_->removeListener(this);
    ticker_.cancel();
    retake_.cancel();
    streams_.clear();
    mixer_.reset();
    isStarting_ = false;
    askingForStreams_ = false;
    askAgain_ = false;
}

} // namespace orv
