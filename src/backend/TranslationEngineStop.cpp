// How the engine ends what it has started: in steps, each with its time.

#include "TranslationEngine.h"

#include "Log.h"
#include "ThreadChecks.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// For a killed child to go, which is a matter of the system alone.
constexpr std::chrono::seconds killedChild{5};

} // namespace

void TranslationEngine::stopBackend() {
    ORV_ON_MAIN();
    setLastWords({});
    startsWhenInstalled_ = false;
    startsWhenStopped_ = false;
    if (!isRunning_ && !child_.isRunning()) {
        logLine(u"Backend läuft nicht");
        return;
    }
    logLine(u"🛑 Stoppe Backend...");
    setStatus(u"engine.stopping"_s);
    if (child_.process) {
        if (!isBeingStopped()) {
            stoppedLaunch_ = child_.launch;
            child_.nextSignal = QDeadlineTimer(environment_.timings.stopPause);
        }
        refreshMayOutlive();
        child_.process->terminate();
    }
    afterPause(&TranslationEngine::stopWithInterrupt);
}

void TranslationEngine::afterPause(void (TranslationEngine::*step)()) {
    QTimer::singleShot(environment_.timings.stopPause, Qt::PreciseTimer, this,
                       [this, step, launch = launches_, number = stopNumber_] {
                           if (launch == launches_ && number == stopNumber_) {
                               (this->*step)();
                           }
                       });
}

void TranslationEngine::stopWithInterrupt() {
    ORV_ON_MAIN();
    interruptIfRunning();
    afterPause(&TranslationEngine::stopWithKill);
}

void TranslationEngine::stopWithKill() {
    ORV_ON_MAIN();
    killIfRunning();
    retireChild();
    setState(false, u"engine.stopped"_s);
    stopStatusCheckTimer();
    logLine(u"✓ Backend gestoppt");
    Q_EMIT BackendStatusChanged(false);
}

void TranslationEngine::interruptIfRunning() {
    if (child_.isRunning()) {
        logLine(u"⚠️ Backend reagiert nicht auf SIGTERM, sende SIGINT...");
        child_.process->interrupt();
        child_.interrupted = true;
        child_.nextSignal = QDeadlineTimer(environment_.timings.stopPause);
    }
}

void TranslationEngine::killIfRunning() {
    if (child_.isRunning()) {
        logLine(u"⚠️ Backend reagiert nicht, sende SIGKILL...");
        child_.process->kill();
    }
}

void TranslationEngine::endChildNow() {
    if (child_.process && !child_.interrupted && !endsBeforeNextSignal()) {
        interruptIfRunning();
    }
    if (child_.process && !endsBeforeNextSignal()) {
        killIfRunning();
    }
    retireChild();
    // Only killed ones can still be running.
    for (const Child& child : retired_) {
        child.process->waitForEnd(killedChild);
    }
}

bool TranslationEngine::endsBeforeNextSignal() const {
    return child_.process->waitForEnd(std::chrono::milliseconds(child_.nextSignal.remainingTime()));
}

void TranslationEngine::retireChild() {
    if (child_.process) {
        retired_.push_back(std::exchange(child_, {}));
    }
}

void TranslationEngine::stopForGood() {
    ORV_ON_MAIN();
    startsNothing_ = true;
    stopBackend();
}

} // namespace orv
