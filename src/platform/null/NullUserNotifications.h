#pragma once

#include "UserNotifications.h"

#include <QTimer>

#include <utility>

namespace orv {

/// A desktop without notifications: nothing is ever granted.
class NullUserNotifications : public UserNotifications {
  public:
    void requestAuthorization(NotificationOptions /*options*/,
                              Answer<const NotificationAuthorization&> done) override {
        QTimer::singleShot(0, &context_, [done = std::move(done)] { done({}); });
    }

    void notify(const QString& /*title*/, const QString& /*message*/) override {}

  private:
    QObject context_;
};

} // namespace orv
