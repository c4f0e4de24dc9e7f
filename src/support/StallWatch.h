#pragma once

#include "PostTarget.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace orv {

/// Notices when the thread it is made on, which must have an event loop, does not come round for
/// too long. A thread of its own posts a tick to it, measures how long the answer takes, and posts
/// the next. Meant for debug builds: it wakes the program a hundred times a second.
class StallWatch {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    using Report = std::function<void(std::chrono::milliseconds stalled)>;

    /// `report` is called on the watching thread for each answer that took longer than `limit`,
    /// once it is there. Ticks are `pause` apart. `clock` is asked on both threads.
    StallWatch(std::chrono::milliseconds limit, Report report,
               std::chrono::milliseconds pause = std::chrono::milliseconds(10),
               Clock clock = std::chrono::steady_clock::now);

    /// Ends the watching thread; a tick that is under way is not waited for.
    ~StallWatch();

    StallWatch(const StallWatch&) = delete;
    StallWatch& operator=(const StallWatch&) = delete;

  private:
    void run();

    const std::chrono::milliseconds limit_;
    const Report report_;
    const std::chrono::milliseconds pause_;
    const Clock clock_;
    PostTarget watched_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool answered_ = false;
    bool finishing_ = false;
    std::chrono::steady_clock::time_point answeredAt_;
    std::thread thread_;
};

/// The line that tells of a stall of the main thread.
void logStall(std::chrono::milliseconds stalled);

} // namespace orv
