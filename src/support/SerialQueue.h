#pragma once

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace orv {

/// A thread that runs the jobs handed to it one after the other, in the order of posting but for
/// those that are urgent or wait for their time. It has no event loop; for objects that need one
/// see `EventLoopThread`.
class SerialQueue {
  public:
    using Job = std::function<void()>;

    /// `label` names the queue; the thread carries its last 15 characters.
    explicit SerialQueue(const QString& label);

    /// Runs every job that was posted before, then joins the thread. Must not be called on the
    /// queue itself.
    ~SerialQueue();

    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    /// Appends a job. Callable from any thread, also from a job. Once the queue has had its usual
    /// number of jobs, a job that fits into a `std::function` needs no memory.
    void post(Job job);

    /// Puts a job before all that wait, behind other urgent ones: it waits for the job under way at
    /// most. Callable from any thread, also from a job.
    void postUrgent(Job job);

    /// Posts a job once the time is over. A job whose time has not come when the queue ends does
    /// not run. Callable from any thread, also from a job.
    void postAfter(std::chrono::milliseconds delay, Job job);

    /// Posts `job` and waits until it, and so everything posted before it, has run. Must not be
    /// called on the queue itself.
    void sync(Job job);

    /// True on the queue's own thread.
    bool isCurrent() const;

    QString label() const { return label_; }

  private:
    void run();
    /// False when there is nothing left to run and the queue ends.
    bool waitForJobs(std::unique_lock<std::mutex>& lock);
    void takeDueJobs();
    void runUrgentJobs();

    const QString label_;
    std::mutex mutex_; ///< Guards everything down to `finishing_`.
    std::condition_variable wake_;
    std::vector<Job> jobs_;
    std::vector<Job> urgentJobs_;
    std::multimap<std::chrono::steady_clock::time_point, Job> laterJobs_; ///< By when they are due.
    bool finishing_ = false;
    std::thread thread_;
};

} // namespace orv
