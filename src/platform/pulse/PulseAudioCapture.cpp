#include "PulseAudioCapture.h"

#include "ApplicationIdentity.h"
#include "Log.h"
#include "NullAudioCapture.h"
#include "Post.h"
#include "PulseMicrophone.h"
#include "PulseScreenCapture.h"
#include "ThreadChecks.h"

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

PulseAudioCapture::PulseAudioCapture(SerialQueue& disk, std::shared_ptr<PulseConnection> connection,
                                     RunningAppPlaces places)
    : connection_(std::move(connection))
    , scanner_(std::make_shared<RunningAppScanner>(disk, std::move(places))) {
    ORV_ON_MAIN();
    settle_.setSingleShot(true);
    settle_.setInterval(50ms);
    QObject::connect(&settle_, &QTimer::timeout, &context_, [this] {
        if (listener_) {
            listener_->captureListsChanged();
        }
    });
    const PulseLock lock(*connection_);
    connection_->addListener(this);
    if (connection_->isReady()) {
        pulseReady();
    }
}

PulseAudioCapture::~PulseAudioCapture() {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->removeListener(this);
    connection_->forget(this);
}

void PulseAudioCapture::microphoneAuthorization(Answer<CaptureAuthorization> done) {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->whenSettled(this, [this, done = std::move(done)](bool ready) {
        post(&context_, [done, ready] {
            done(ready ? CaptureAuthorization::Authorized : CaptureAuthorization::Denied);
        });
    });
}

void PulseAudioCapture::requestMicrophoneAccess(Answer<bool> done) {
    ORV_ON_MAIN();
    microphoneAuthorization([done = std::move(done)](CaptureAuthorization status) {
        done(status == CaptureAuthorization::Authorized);
    });
}

void PulseAudioCapture::listInputDevices(Answer<const QList<AudioDevice>&> done) {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->whenSettled(this, [this, done = std::move(done)](bool) {
        connection_->listSources(this, [this, done](const auto& sources) {
            post(&context_, [done, devices = sources ? inputDevices(*sources)
                                                     : QList<AudioDevice>()] { done(devices); });
        });
    });
}

void PulseAudioCapture::listCapturableApps(Answer<const std::optional<QList<RunningApp>>&> done) {
    ORV_ON_MAIN();
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

void PulseAudioCapture::listRunningApps(Answer<const QList<RunningApp>&> done) {
    ORV_ON_MAIN();
    scanner_->scan(&context_, std::move(done));
}

std::unique_ptr<MicrophoneStream>
PulseAudioCapture::createMicrophoneStream(MicrophoneStream::Listener& listener) {
    ORV_ON_MAIN();
    return std::make_unique<PulseMicrophone>(connection_, listener);
}

std::unique_ptr<ScreenCaptureStream>
PulseAudioCapture::createScreenCaptureStream(ScreenCaptureStream::Listener& listener) {
    ORV_ON_MAIN();
    return std::make_unique<PulseScreenCapture>(connection_, scanner_, listener);
}

void PulseAudioCapture::setListener(Listener* listener) {
    ORV_ON_MAIN();
    listener_ = listener;
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
        if (listener_) {
            listener_->captureAvailabilityChanged(available);
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

std::unique_ptr<AudioCapture> createSystemAudioCapture(SerialQueue& disk) {
    if (auto connection = PulseConnection::create({})) {
        return std::make_unique<PulseAudioCapture>(disk, std::move(connection));
    }
    logLine(u"❌ Kein Ton: die Verbindung zum Tonserver lässt sich nicht vorbereiten");
    auto none = std::make_unique<NullAudioCapture>();
    none->answers().authorization = CaptureAuthorization::Denied;
    return none;
}

} // namespace orv
