#include "DesktopNotifications.h"

#include "ThreadChecks.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

DesktopNotifications::DesktopNotifications(QDBusConnection bus)
    : bus_(std::move(bus)) {}

void DesktopNotifications::requestAuthorization(NotificationOptions /*options*/,
                                                Answer<const NotificationAuthorization&> done) {
    ORV_ON_MAIN();
    const QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s,
        u"org.freedesktop.Notifications"_s, u"GetCapabilities"_s);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    const auto answer = [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done({.granted = !watcher->isError(), .error = watcher->error().message()});
    };
    if (watcher->isFinished()) {
        // Without a bus the call has failed already, and no signal tells of it.
        QTimer::singleShot(0, watcher, answer);
    } else {
        connect(watcher, &QDBusPendingCallWatcher::finished, watcher, answer);
    }
}

} // namespace orv
