#include "PortalAppearance.h"

#include "ThreadChecks.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop"_L1;
constexpr auto path = "/org/freedesktop/portal/desktop"_L1;
constexpr auto interface = "org.freedesktop.portal.Settings"_L1;
constexpr auto appearanceGroup = "org.freedesktop.appearance"_L1;
constexpr auto schemeKey = "color-scheme"_L1;

} // namespace

ColourScheme colourSchemeFrom(const QVariant& value) {
    QVariant plain = value;
    while (plain.metaType() == QMetaType::fromType<QDBusVariant>()) {
        plain = plain.value<QDBusVariant>().variant();
    }
    bool isNumber = false;
    switch (plain.toUInt(&isNumber)) {
    case 1:
        return ColourScheme::Dark;
    case 2:
        return ColourScheme::Light;
    default:
        return ColourScheme::NoPreference;
    }
}

void PortalAppearance::setHandler(Handler handler) {
    ORV_ON_MAIN();
    handler_ = std::move(handler);
    if (!handler_) {
        return;
    }
    if (!connected_) {
        // Without the service's name: looking up its owner would wait for the bus. The slot takes
        // the whole message, since Qt refuses single parameters that are D-Bus variants until it
        // has sent its first message.
        connected_ =
            QDBusConnection::sessionBus().connect(QString(), path, interface, u"SettingChanged"_s,
                                                  this, SLOT(settingChanged(QDBusMessage)));
    }
    ask();
}

void PortalAppearance::ask() {
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
    question << QString(appearanceGroup) << QString(schemeKey);
    auto* call =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &PortalAppearance::answered);
}

void PortalAppearance::answered(QDBusPendingCallWatcher* call) {
    call->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *call;
    if (!reply.isError() && handler_) {
        handler_(colourSchemeFrom(reply.value().variant()));
    }
}

void PortalAppearance::settingChanged(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (handler_ && arguments.size() == 3 && arguments[0].toString() == appearanceGroup &&
        arguments[1].toString() == schemeKey) {
        handler_(colourSchemeFrom(arguments[2]));
    }
}

std::unique_ptr<DesktopAppearance> createDesktopAppearance() {
    return std::make_unique<PortalAppearance>();
}

} // namespace orv
