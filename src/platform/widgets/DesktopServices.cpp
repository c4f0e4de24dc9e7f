#include "DesktopServices.h"

#include "Log.h"
#include "ThreadChecks.h"
#include "WebAddress.h"

#include <QDesktopServices>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace orv {

void DesktopServices::openAddress(const QString& url) {
    ORV_ON_MAIN();
    const auto address = webAddress(url);
    if (!address || !QDesktopServices::openUrl(*address)) {
        logLine(u"⚠️ Adresse kann nicht geöffnet werden: "_s + url);
    }
}

void DesktopServices::revealFolder(const QString& path) {
    ORV_ON_MAIN();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
        logLine(u"⚠️ Ordner kann nicht geöffnet werden: "_s + path);
    }
}

} // namespace orv
