#include "PulseAudioCapture.h"

#include "ApplicationIdentity.h"
#include "Post.h"
#include "PulseMicrophone.h"
#include "PulseScreenCapture.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace orv {

namespace {

void addOnce(QList<RunningApp>& apps, const RunningApp& app) {
    const bool isThere = std::any_of(apps.begin(), apps.end(), [&](const RunningApp& one) {
        return one.bundleId == app.bundleId;
    });
    if (!isThere) {
        apps.append(app);
    }
}

QList<RunningApp> playingApps(const std::vector<PulsePlayback>& playbacks) {
    QList<RunningApp> apps;
    for (const PulsePlayback& playback : playbacks) {
        if (const auto app = applicationOf(playback, QCoreApplication::applicationPid())) {
            addOnce(apps, *app);
        }
    }
    return apps;
}

QList<AudioDevice> inputDevices(const std::vector<PulseSource>& sources) {
    QList<AudioDevice> devices;
    for (const PulseSource& source : sources) {
        if (!source.isMonitor) {
            devices.append({.id = QString::fromUtf8(source.name), .name = source.description});
        }
    }
    return devices;
}

} // namespace

PulseAudioCapture::PulseAudioCapture(PulseOptions options, RunningAppPlaces places)
    : connection_(std::make_shared<PulseConnection>(std::move(options)))
    , scanner_(std::make_shared<RunningAppScanner>(std::move(places))) {
    settle_.setSingleShot(true);
    settle_.setInterval(50ms);
    QObject::connect(&settle_, &QTimer::timeout, &context_, [this] {
        if (onListsChanged_) {
            onListsChanged_();
        }
    });
    const PulseLock lock(*connection_);
    connection_->addListener(this);
    if (connection_->isReady()) {
        pulseReady();
    }
}

PulseAudioCapture::~PulseAudioCapture() {
    const PulseLock lock(*connection_);
    connection_->removeListener(this);
    connection_->forget(this);
}

void PulseAudioCapture::microphoneAuthorization(std::function<void(CaptureAuthorization)> done) {
    const PulseLock lock(*connection_);
    connection_->whenSettled(this, [this, done = std::move(done)](bool ready) {
        post(&context_, [done, ready] {
            done(ready ? CaptureAuthorization::Authorized : CaptureAuthorization::Denied);
        });
    });
}

void PulseAudioCapture::requestMicrophoneAccess(std::function<void(bool granted)> done) {
    microphoneAuthorization([done = std::move(done)](CaptureAuthorization status) {
        done(status == CaptureAuthorization::Authorized);
    });
}

void PulseAudioCapture::listInputDevices(std::function<void(const QList<AudioDevice>&)> done) {
    const PulseLock lock(*connection_);
    connection_->whenSettled(this, [this, done = std::move(done)](bool) {
        connection_->listSources(this, [this, done](const auto& sources) {
            post(&context_, [done, devices = sources ? inputDevices(*sources)
                                                     : QList<AudioDevice>()] { done(devices); });
        });
    });
}

void PulseAudioCapture::listCapturableApps(
    std::function<void(const std::optional<QList<RunningApp>>&)> done) {
    scanner_->scan(&context_, [this, done = std::move(done)](const QList<RunningApp>& running) {
        const PulseLock lock(*connection_);
        connection_->whenSettled(this, [this, done, running](bool) {
            connection_->listPlaybacks(this, [this, done, running](const auto& playbacks) {
                std::optional<QList<RunningApp>> apps;
                if (playbacks) {
                    apps = playingApps(*playbacks);
                    for (const RunningApp& app : running) {
                        addOnce(*apps, app);
                    }
                }
                post(&context_, [done, apps = std::move(apps)] { done(apps); });
            });
        });
    });
}

void PulseAudioCapture::listRunningApps(std::function<void(const QList<RunningApp>&)> done) {
    scanner_->scan(&context_, std::move(done));
}

std::unique_ptr<MicrophoneStream> PulseAudioCapture::createMicrophoneStream() {
    return std::make_unique<PulseMicrophone>(connection_);
}

std::unique_ptr<ScreenCaptureStream> PulseAudioCapture::createScreenCaptureStream() {
    return std::make_unique<PulseScreenCapture>(connection_, scanner_);
}

void PulseAudioCapture::setListsChangedHandler(std::function<void()> handler) {
    onListsChanged_ = std::move(handler);
}

void PulseAudioCapture::setAvailabilityHandler(std::function<void(bool available)> handler) {
    onAvailability_ = std::move(handler);
}

void PulseAudioCapture::pulseReady() {
    tellAvailability(true);
    tellListsChanged();
}

void PulseAudioCapture::pulseLost() {
    tellAvailability(false);
    tellListsChanged();
}

void PulseAudioCapture::pulseChanged(PulseChange change) {
    if (change == PulseChange::Sources || change == PulseChange::Playbacks) {
        tellListsChanged();
    }
}

void PulseAudioCapture::tellAvailability(bool available) {
    post(&context_, [this, available] {
        if (onAvailability_) {
            const auto handler = onAvailability_;
            handler(available);
        }
    });
}

void PulseAudioCapture::tellListsChanged() {
    post(&context_, [this] {
        if (!settle_.isActive()) {
            settle_.start();
        }
    });
}

std::unique_ptr<AudioCapture> createSystemAudioCapture() {
    return std::make_unique<PulseAudioCapture>();
}

} // namespace orv
