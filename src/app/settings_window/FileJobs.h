#pragma once

#include "PostTarget.h"
#include "SerialQueue.h"
#include "ThreadChecks.h"

#include <utility>

namespace orv {

/// Runs a window's work on files on the queue for the disk, so that a slow disk never holds up the
/// interface. The results come back to the thread that made the object, unless it is gone by then;
/// nobody waits for the work.
class FileJobs {
  public:
    /// The queue outlives the object.
    explicit FileJobs(SerialQueue& disk)
        : disk_(disk) {}

    /// Runs `work` in the background, then `done` with what it returned. The settings are not
    /// stored while it lasts: what may take longer than a moment comes in several pieces. `work`
    /// may run when the object is gone, and owns what it needs.
    template <typename Work, typename Done>
    void run(Work work, Done done) {
        ORV_ON_MAIN();
        disk_.post([work = std::move(work), done = std::move(done), back = back_.handle()] {
            back.post([done, result = work()]() mutable { done(std::move(result)); });
        });
    }

  private:
    SerialQueue& disk_;
    PostTarget back_;
};

} // namespace orv
