#include "DesktopNotifications.h"

#include "ThreadChecks.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

DesktopNotifications::DesktopNotifications(QDBusConnection bus)
    : bus_(std::move(bus)) {}

namespace {

QDBusMessage serviceCall(const QString& method) {
    return QDBusMessage::createMethodCall(u"org.freedesktop.Notifications"_s,
                                          u"/org/freedesktop/Notifications"_s,
                                          u"org.freedesktop.Notifications"_s, method);
}

} // namespace

void DesktopNotifications::notify(const QString& title, const QString& message) {
    ORV_ON_MAIN();
    // "Notify" of freedesktop.org's Desktop Notifications 1.2. A body may be read as markup.
    QDBusMessage call = serviceCall(u"Notify"_s);
    constexpr quint32 replacesNone = 0;
    constexpr int timeOfTheDesktop = -1;
    call << u"Orvane"_s << replacesNone << u"orvane"_s << title << message.toHtmlEscaped()
         << QStringList() << QVariantMap() << timeOfTheDesktop;
    bus_.asyncCall(call);
}

void DesktopNotifications::requestAuthorization(NotificationOptions /*options*/,
                                                Answer<const NotificationAuthorization&> done) {
    ORV_ON_MAIN();
    auto* watcher =
        new QDBusPendingCallWatcher(bus_.asyncCall(serviceCall(u"GetCapabilities"_s)), this);
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
