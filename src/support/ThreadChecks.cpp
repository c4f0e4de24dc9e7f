#include "ThreadChecks.h"

#include <QCoreApplication>
#include <QThread>

namespace orv::threadChecks {

bool isMain() {
    const QCoreApplication* application = QCoreApplication::instance();
    return application == nullptr || QThread::currentThread() == application->thread();
}

void demand(bool isRight, const char* function) {
    if (!isRight) {
        qFatal("called on the wrong thread: %s", function);
    }
}

} // namespace orv::threadChecks
