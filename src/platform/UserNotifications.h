#pragma once

#include "Answer.h"

#include <QFlags>
#include <QString>

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

    /// Asks whether the program may notify the user. Returns at once; the answer always comes.
    virtual void requestAuthorization(NotificationOptions options,
                                      Answer<const NotificationAuthorization&> done) = 0;

    /// Tells the user something, once, wherever the desktop does that. Returns at once; a desktop
    /// that tells nothing is not heard of.
    virtual void notify(const QString& title, const QString& message) = 0;
};

} // namespace orv
