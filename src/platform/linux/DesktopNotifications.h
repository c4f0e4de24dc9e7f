#pragma once

#include "UserNotifications.h"

#include <QDBusConnection>
#include <QObject>

namespace orv {

/// The notification service of freedesktop.org desktops. Such a desktop asks nobody for a
/// permission: what the program asks for is granted when the service answers.
class DesktopNotifications : public QObject, public UserNotifications {
    Q_OBJECT

  public:
    /// On the user's message bus, unless a test brings another one.
    explicit DesktopNotifications(QDBusConnection bus = QDBusConnection::sessionBus());

    void requestAuthorization(NotificationOptions options,
                              Answer<const NotificationAuthorization&> done) override;

    void notify(const QString& title, const QString& message) override;

  private:
    QDBusConnection bus_;
};

} // namespace orv
