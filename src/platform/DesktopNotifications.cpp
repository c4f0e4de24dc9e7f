#include "DesktopNotifications.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

DesktopNotifications::DesktopNotifications(QDBusConnection bus)
    : bus_(std::move(bus)) {}

void DesktopNotifications::requestAuthorization(
    NotificationOptions /*options*/,
    std::function<void(const NotificationAuthorization& answer)> done) {
    const QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s,
        u"org.freedesktop.Notifications"_s, u"GetCapabilities"_s);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done({.granted = !watcher->isError(), .error = watcher->error().message()});
    });
}

} // namespace orv
