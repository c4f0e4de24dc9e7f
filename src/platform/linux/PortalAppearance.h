#pragma once

#include "DesktopAppearance.h"

// The slot's parameter has to be complete where the class is, else its calls are dropped silently.
#include <QDBusMessage>
#include <QObject>
#include <QVariant>

class QDBusPendingCallWatcher;

namespace orv {

/// The desktop portal's setting "color-scheme" in the group "org.freedesktop.appearance": 1 dark,
/// 2 light, anything else no preference. Readers get it wrapped in one or two variants.
ColourScheme colourSchemeFrom(const QVariant& value);

/// The appearance that the settings portal on the session bus tells, asked for asynchronously.
class PortalAppearance : public QObject, public DesktopAppearance {
    Q_OBJECT

  public:
    void setHandler(Handler handler) override;

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& message);

  private:
    void ask();
    void answered(QDBusPendingCallWatcher* call);

    Handler handler_;
    bool connected_ = false;
};

} // namespace orv
