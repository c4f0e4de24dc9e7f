#include "Quit.h"

#include "BackendControl.h"
#include "Log.h"
#include "ThreadChecks.h"

#include <QTimer>

#include <utility>

namespace orv {

Quit::Quit(BackendControl& backend, QuitTimings timings)
    : backend_(backend)
    , timings_(timings) {}

void Quit::fromMenu() {
    ORV_ON_MAIN();
    if (std::exchange(isUnderWay_, true)) {
        return;
    }
    logLine(u"🛑 App wird beendet...");
    backend_.stopForGood();
    QTimer::singleShot(timings_.secondStop, this, [this] {
        if (backend_.isRunning()) {
            logLine(u"⚠️ Backend noch aktiv, force stop...");
            backend_.stopForGood();
        }
        QTimer::singleShot(timings_.terminate, this, &Quit::terminationDue);
    });
}

void Quit::fromPanel(const std::function<void()>& stopRun) {
    ORV_ON_MAIN();
    if (std::exchange(isUnderWay_, true)) {
        return;
    }
    logLine(u"🛑 Beende App...");
    stopRun();
    backend_.stopForGood();
    QTimer::singleShot(timings_.panel, this, &Quit::terminationDue);
}

} // namespace orv
