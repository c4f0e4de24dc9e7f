#include "SessionEnd.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace orv {

SessionEnd::SessionEnd(std::function<void()> requested)
    : requested_(std::move(requested)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool SessionEnd::eventFilter(QObject* watched, QEvent* event) {
    if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) {
        requested_();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orv
