#include "GracefulStop.h"

#include "Log.h"
#include "ThreadChecks.h"

#include <QString>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

GracefulStop::GracefulStop(Steps& steps, Timings timings)
    : steps_(steps)
    , timings_(timings) {
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { advanceFrom(step_); });
}

void GracefulStop::begin(std::vector<float> lastBuffer) {
    ORV_ON_MAIN();
    if (lastBuffer.size() >= minimumLastBuffer) {
        enterLastBuffer(std::move(lastBuffer));
    } else {
        enterFlush();
    }
}

void GracefulStop::flushed() {
    ORV_ON_MAIN();
    advanceFrom(Step::Flush);
}

void GracefulStop::linkFailed() {
    ORV_ON_MAIN();
    linkBroken_ = true;
    advanceFrom(Step::Flush);
}

void GracefulStop::enterLastBuffer(std::vector<float>&& samples) {
    step_ = Step::LastBuffer;
    logLine(u"📤 Sende letzten Buffer: "_s + QString::number(samples.size()) + u" samples"_s);
    wait(timings_.lastBuffer);
    steps_.sendLastBuffer(std::move(samples), advancer(Step::LastBuffer));
}

void GracefulStop::enterFlush() {
    step_ = Step::Flush;
    wait(timings_.flush);
    steps_.sendFlush();
    logLine(u"⏳ Warte auf Backend-Verarbeitung...");
    if (linkBroken_) {
        advanceFrom(Step::Flush);
    }
}

void GracefulStop::enterStop() {
    logLine(u"✓ Backend-Verarbeitung abgeschlossen");
    step_ = Step::Stop;
    wait(timings_.stop);
    steps_.sendStop(advancer(Step::Stop));
}

BackendLink::Sent GracefulStop::advancer(Step step) {
    return [this, step, target = target_.handle()](const QString&) {
        target.post([this, step] { advanceFrom(step); });
    };
}

void GracefulStop::finish() {
    step_ = Step::Done;
    timer_.stop();
    steps_.stepsDone();
}

void GracefulStop::wait(std::chrono::milliseconds limit) {
    timer_.start(limit);
}

void GracefulStop::advanceFrom(Step step) {
    ORV_ON_MAIN();
    if (step != step_) {
        return; // Told twice, or too late.
    }
    switch (step) {
    case Step::LastBuffer:
        enterFlush();
        break;
    case Step::Flush:
        enterStop();
        break;
    case Step::Stop:
        finish();
        break;
    case Step::Done:
        break;
    }
}

} // namespace orv
