#include "GracefulStop.h"

#include "Log.h"

#include <QString>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

GracefulStop::GracefulStop(std::size_t lastBufferSamples, Actions actions, Timings timings)
    : actions_(std::move(actions))
    , timings_(timings) {
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { advanceFrom(step_); });
    if (lastBufferSamples >= minimumLastBuffer) {
        enterLastBuffer(lastBufferSamples);
    } else {
        enterFlush();
    }
}

void GracefulStop::flushed() {
    advanceFrom(Step::Flush);
}

void GracefulStop::linkFailed() {
    linkBroken_ = true;
    advanceFrom(Step::Flush);
}

void GracefulStop::enterLastBuffer(std::size_t samples) {
    step_ = Step::LastBuffer;
    logLine(u"📤 Sende letzten Buffer: "_s + QString::number(samples) + u" samples"_s);
    wait(timings_.lastBuffer);
    actions_.sendLastBuffer([this, target = target_.handle()] {
        target.post([this] { advanceFrom(Step::LastBuffer); });
    });
}

void GracefulStop::enterFlush() {
    step_ = Step::Flush;
    wait(timings_.flush);
    actions_.sendFlush();
    logLine(u"⏳ Warte auf Backend-Verarbeitung...");
    if (linkBroken_) {
        advanceFrom(Step::Flush);
    }
}

void GracefulStop::enterStop() {
    logLine(u"✓ Backend-Verarbeitung abgeschlossen");
    step_ = Step::Stop;
    wait(timings_.stop);
    actions_.sendStop(
        [this, target = target_.handle()] { target.post([this] { advanceFrom(Step::Stop); }); });
}

void GracefulStop::finish() {
    step_ = Step::Done;
    timer_.stop();
    actions_.done();
}

void GracefulStop::wait(std::chrono::milliseconds limit) {
    timer_.start(limit);
}

void GracefulStop::advanceFrom(Step step) {
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
