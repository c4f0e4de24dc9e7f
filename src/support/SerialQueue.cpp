#include "SerialQueue.h"

#include <QtGlobal>

#include <pthread.h>
#include <utility>

namespace orv {

SerialQueue::SerialQueue(const QString& label)
    : label_(label)
    , thread_([this] { run(); }) {}

SerialQueue::~SerialQueue() {
    Q_ASSERT(!isCurrent());
    {
        const std::lock_guard lock(mutex_);
        finishing_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void SerialQueue::post(Job job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
}

void SerialQueue::sync(Job job) {
    Q_ASSERT(!isCurrent());
    std::promise<void> done;
    post([&] {
        job();
        done.set_value();
    });
    done.get_future().wait();
}

bool SerialQueue::isCurrent() const {
    return std::this_thread::get_id() == thread_.get_id();
}

void SerialQueue::run() {
    pthread_setname_np(pthread_self(), label_.right(15).toUtf8().constData());
    std::vector<Job> taken; // Its memory and that of `jobs_` change places, so that none is made.
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return finishing_ || !jobs_.empty(); });
        if (jobs_.empty()) {
            return;
        }
        taken.swap(jobs_);
        lock.unlock();
        for (Job& job : taken) {
            std::exchange(job, nullptr)();
        }
        taken.clear();
        lock.lock();
    }
}

} // namespace orv
