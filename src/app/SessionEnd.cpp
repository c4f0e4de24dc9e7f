#include "SessionEnd.h"

#include "ThreadChecks.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace orv {

SessionEnd::SessionEnd(std::function<void()> requested)
    : requested_(std::move(requested)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool SessionEnd::eventFilter(QObject* watched, QEvent* event) {
    ORV_ON_MAIN();
    if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) {
        requested_();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orv
