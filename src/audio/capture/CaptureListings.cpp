// What there is to listen to.

#include "CaptureLines.h"
#include "CaptureSources.h"
#include "Log.h"
#include "ThreadChecks.h"

#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

void CaptureSources::scanDevices() {
    askDevices(Announce::Always);
}

void CaptureSources::refreshCapturableApps() {
    askCapturableApps(Announce::Always);
}

void CaptureSources::scanRunningApps() {
    askRunningApps(Announce::Always);
}

void CaptureSources::refreshLists() {
    scanDevices();
    checkScreenCapturePermission();
    refreshCapturableApps();
    scanRunningApps();
}

void CaptureSources::captureListsChanged() {
    ORV_ON_MAIN();
    askDevices(Announce::Changes);
    askCapturableApps(Announce::Changes);
    askRunningApps(Announce::Changes);
    checkScreenCapturePermission();
    // What a run waits for may be among the news.
    if (retry_.isActive()) {
        retry();
    }
}

void CaptureSources::askDevices(Announce announce) {
    ORV_ON_MAIN();
    capture_.listInputDevices(
        [owner = QPointer(this), announce](const QList<AudioDevice>& devices) {
            if (!owner || (announce == Announce::Changes && devices == owner->inputDevices_)) {
                return;
            }
            logLine(QString(u"🎤 Gefundene Mikrofone: "_s + QString::number(devices.size())));
            owner->isBlackHoleInstalled_ =
                std::any_of(devices.begin(), devices.end(), [](const AudioDevice& device) {
                    return device.name.toLower().contains(u"blackhole"_s);
                });
            if (owner->isBlackHoleInstalled_) {
                logLine(u"✓ BlackHole gefunden"_s);
            }
            owner->inputDevices_ = devices;
            Q_EMIT owner->listsChanged();
        });
}

void CaptureSources::askCapturableApps(Announce announce) {
    ORV_ON_MAIN();
    capture_.listCapturableApps(
        [owner = QPointer(this), announce](const std::optional<QList<RunningApp>>& answer) {
            const QList<RunningApp> apps = answer.value_or(QList<RunningApp>());
            if (!owner || (announce == Announce::Changes && apps == owner->capturableApps_)) {
                return;
            }
            logLine(captureLines::apps(u"📱 ScreenCaptureKit Apps"_s, apps));
            owner->capturableApps_ = apps;
            Q_EMIT owner->listsChanged();
        });
}

void CaptureSources::askRunningApps(Announce announce) {
    ORV_ON_MAIN();
    capture_.listRunningApps([owner = QPointer(this), announce](const QList<RunningApp>& apps) {
        if (!owner || (announce == Announce::Changes && apps == owner->runningApps_)) {
            return;
        }
        logLine(captureLines::apps(u"📱 Gefundene Apps"_s, apps));
        owner->runningApps_ = apps;
        Q_EMIT owner->listsChanged();
    });
}

void CaptureSources::checkScreenCapturePermission() {
    ORV_ON_MAIN();
    capture_.listCapturableApps(
        [owner = QPointer(this)](const std::optional<QList<RunningApp>>& answer) {
            if (owner && std::exchange(owner->hasScreenCapturePermission_, answer.has_value()) !=
                             answer.has_value()) {
                Q_EMIT owner->listsChanged();
            }
        });
}

} // namespace orv
