#include "StallWatch.h"

#include "Log.h"

#include <pthread.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

StallWatch::StallWatch(std::chrono::milliseconds limit, Report report,
                       std::chrono::milliseconds pause, Clock clock)
    : limit_(limit)
    , report_(std::move(report))
    , pause_(pause)
    , clock_(std::move(clock))
    , thread_([this] { run(); }) {
    ::pthread_setname_np(thread_.native_handle(), "stall-watch");
}

StallWatch::~StallWatch() {
    {
        const std::lock_guard lock(mutex_);
        finishing_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void StallWatch::run() {
    const PostTarget::Handle watched = watched_.handle();
    std::unique_lock lock(mutex_);
    while (!finishing_) {
        answered_ = false;
        lock.unlock();
        const auto asked = clock_();
        watched.post([this] {
            const auto now = clock_();
            const std::lock_guard answer(mutex_);
            answered_ = true;
            answeredAt_ = now;
            wake_.notify_all();
        });
        lock.lock();
        wake_.wait(lock, [this] { return answered_ || finishing_; });
        const auto stalled =
            std::chrono::duration_cast<std::chrono::milliseconds>(answeredAt_ - asked);
        if (answered_ && stalled > limit_) {
            lock.unlock();
            report_(stalled);
            lock.lock();
        }
        wake_.wait_for(lock, pause_, [this] { return finishing_; });
    }
}

void logStall(std::chrono::milliseconds stalled) {
    logLine(u"⚠️ Haupt-Thread war " % QString::number(stalled.count()) % u" ms blockiert");
}

} // namespace orv
