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

void SerialQueue::postUrgent(Job job) {
    {
        const std::lock_guard lock(mutex_);
        urgentJobs_.push_back(std::move(job));
    }
    wake_.notify_one();
}

void SerialQueue::postAfter(std::chrono::milliseconds delay, Job job) {
    {
        const std::lock_guard lock(mutex_);
        laterJobs_.emplace(std::chrono::steady_clock::now() + delay, std::move(job));
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
    while (waitForJobs(lock)) {
        taken.swap(jobs_);
        lock.unlock();
        for (Job& job : taken) {
            runUrgentJobs();
            std::exchange(job, nullptr)();
        }
        runUrgentJobs();
        taken.clear();
        lock.lock();
    }
}

bool SerialQueue::waitForJobs(std::unique_lock<std::mutex>& lock) {
    for (;;) {
        takeDueJobs();
        if (!jobs_.empty() || !urgentJobs_.empty()) {
            return true;
        }
        if (finishing_) {
            return false;
        }
        if (laterJobs_.empty()) {
            wake_.wait(lock);
        } else {
            const auto due = laterJobs_.begin()->first;
            wake_.wait_until(lock, due);
        }
    }
}

void SerialQueue::takeDueJobs() {
    const auto end = laterJobs_.empty() ? laterJobs_.begin()
                                        : laterJobs_.upper_bound(std::chrono::steady_clock::now());
    for (auto job = laterJobs_.begin(); job != end; job = laterJobs_.erase(job)) {
        jobs_.push_back(std::move(job->second));
    }
}

void SerialQueue::runUrgentJobs() {
    std::unique_lock lock(mutex_);
    while (!urgentJobs_.empty()) {
        std::vector<Job> taken;
        taken.swap(urgentJobs_);
        lock.unlock();
        for (Job& job : taken) {
            std::exchange(job, nullptr)();
        }
        lock.lock();
    }
}

} // namespace orv
