#pragma once

#include "UniqueFd.h"

#include <chrono>
#include <cstddef>

namespace orv {

/// Where log lines go: a descriptor, written to without ever waiting for whoever reads it, and
/// without changing it for those who share it. A pipe or a terminal is opened a second time for
/// that, since being non-blocking belongs to the open file and not to the descriptor. Where that is
/// refused (a terminal of another user), pieces that a pipe takes whole are written after asking.
///
/// Writing to a pipe that nobody reads any more raises SIGPIPE, which is the caller's to keep away.
class LogOutput {
  public:
    /// Does not own `descriptor`, which may be closed.
    explicit LogOutput(int descriptor);

    enum class State {
        Taken, ///< All of it.
        Full,  ///< The reader does not take more now.
        Gone,  ///< Closed, broken, or nobody will ever read it.
    };

    struct Outcome {
        State state = State::Taken;
        std::size_t count = 0; ///< Bytes that were taken.
    };

    /// Writes as much as is taken at once, with one call where that is everything. Safe in a signal
    /// handler.
    Outcome write(const char* bytes, std::size_t size) const;

    /// Waits until more may be taken, until `wake` can be read (if not negative) or until `limit`
    /// has passed (for ever if negative). Safe in a signal handler.
    void wait(std::chrono::milliseconds limit, int wake = -1) const;

  private:
    enum class Kind {
        File,      ///< Never makes a writer wait for a reader.
        Socket,    ///< Takes a flag for each call.
        Reopened,  ///< `own_` does not block.
        OnRequest, ///< Written to once it says that it takes something.
    };

    long writeOnce(const char* bytes, std::size_t size) const;

    int descriptor_;
    Kind kind_ = Kind::File;
    UniqueFd own_;
};

} // namespace orv
