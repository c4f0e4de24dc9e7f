#include "BackendAlerts.h"

using namespace Qt::StringLiterals;

namespace orv {

Alert notInstalledAlert(const TextLookup& text, bool offersInstallation) {
    QStringList buttons = {text(u"alert.ok"_s)};
    if (offersInstallation) {
        buttons.prepend(text(u"alert.backend.install"_s));
    }
    return {AlertStyle::Warning, text(u"alert.backend.notfound.title"_s),
            text(u"alert.backend.notfound.msg"_s), buttons};
}

Alert installationFailedAlert(const TextLookup& text, const QString& reason) {
    return {
        AlertStyle::Warning, text(u"alert.install.failed.title"_s), reason, {text(u"alert.ok"_s)}};
}

} // namespace orv
