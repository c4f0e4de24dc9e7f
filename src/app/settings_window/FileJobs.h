#pragma once

#include "PostTarget.h"
#include "SerialQueue.h"

#include <functional>
#include <type_traits>
#include <utility>

namespace orv {

/// Work on the disk for a window: done one after the other on a thread of its own, so that a slow
/// disk never holds up the interface. The results come back to the thread that made the object,
/// unless it is gone by then. Destroying it waits for the work under way.
class FileJobs {
  public:
    FileJobs()
        : queue_(QStringLiteral("io.tavrin.orv.settings-files")) {}

    /// Runs `work` in the background, then `done` with what it returned.
    template <typename Work, typename Done>
    void run(Work work, Done done) {
        queue_.post([work = std::move(work), done = std::move(done), back = back_.handle()] {
            back.post([done, result = work()]() mutable { done(std::move(result)); });
        });
    }

  private:
    PostTarget back_;   ///< Outlives the thread that posts to it.
    SerialQueue queue_; ///< Destroyed first.
};

} // namespace orv
