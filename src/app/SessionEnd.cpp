#include "SessionEnd.h"

#include "ThreadChecks.h"

#include <QCoreApplication>
#include <QEvent>

namespace orv {

SessionEnd::SessionEnd() {
    QCoreApplication::instance()->installEventFilter(this);
}

bool SessionEnd::eventFilter(QObject* watched, QEvent* event) {
    ORV_ON_MAIN();
    if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) {
        Q_EMIT requested();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orv
