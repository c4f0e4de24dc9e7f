#include "OpenOrShow.h"

#include "Dialogs.h"
#include "ThreadChecks.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

OpenOrShow::OpenOrShow(DesktopOpener& desktop, Dialogs& dialogs, TextLookup text)
    : desktop_(desktop)
    , dialogs_(dialogs)
    , text_(std::move(text)) {}

bool OpenOrShow::openAddress(const QString& url) {
    const bool isOpened = desktop_.openAddress(url);
    if (!isOpened) {
        show(url);
    }
    return isOpened;
}

bool OpenOrShow::revealFolder(const QString& path) {
    const bool isOpened = desktop_.revealFolder(path);
    if (!isOpened) {
        show(path);
    }
    return isOpened;
}

void OpenOrShow::show(const QString& what) {
    ORV_ON_MAIN();
    dialogs_.showAlert({.style = AlertStyle::Warning,
                        .title = text_(u"alert.open.title"_s),
                        .message = what,
                        .buttons = {text_(u"alert.open.copy"_s), text_(u"alert.ok"_s)}},
                       [what](int chosen) {
                           if (chosen == 0) {
                               QGuiApplication::clipboard()->setText(what);
                           }
                       });
}

} // namespace orv
