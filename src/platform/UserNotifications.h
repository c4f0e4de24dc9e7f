#pragma once

#include <QFlags>
#include <QString>

#include <functional>

namespace orv {

/// What a program may ask to do with notifications.
enum class NotificationOption { Badge = 1, Sound = 2, Alert = 4 };
Q_DECLARE_FLAGS(NotificationOptions, NotificationOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(NotificationOptions)

/// What the desktop says to that.
struct NotificationAuthorization {
    bool granted = false;
    QString error; ///< Why it is not granted, where the desktop says so.
};

/// The desktop's notifications to the user. Main thread only.
class UserNotifications {
  public:
    virtual ~UserNotifications() = default;

    /// Asks whether the program may notify the user. Returns at once; `done` is called later, once,
    /// unless the object goes first.
    virtual void
    requestAuthorization(NotificationOptions options,
                         std::function<void(const NotificationAuthorization& answer)> done) = 0;
};

} // namespace orv
