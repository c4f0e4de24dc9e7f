#include "DesktopServices.h"

#include "Log.h"
#include "ThreadChecks.h"
#include "WebAddress.h"

#include <QDesktopServices>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace orv {

bool DesktopServices::openAddress(const QString& url) {
    ORV_ON_MAIN();
    const auto address = webAddress(url);
    const bool isOpened = address && QDesktopServices::openUrl(*address);
    if (!isOpened) {
        logLine(u"⚠️ Adresse kann nicht geöffnet werden: "_s + url);
    }
    return isOpened;
}

bool DesktopServices::revealFolder(const QString& path) {
    ORV_ON_MAIN();
    const bool isOpened = QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    if (!isOpened) {
        logLine(u"⚠️ Ordner kann nicht geöffnet werden: "_s + path);
    }
    return isOpened;
}

} // namespace orv
