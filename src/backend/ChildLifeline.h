#pragma once

#include "UniqueFd.h"

#include <QString>

#include <sys/types.h>

#include <chrono>

namespace orv {

/// A guard that ends a child together with the program, however the program ends, SIGKILL included.
/// A small shell process holds the other end of a socket; once the program is gone it sends the
/// child SIGTERM, SIGINT and SIGKILL with pauses in between and ends, at the latest after two
/// pauses.
///
/// A child that may stay is left alone, and what it prints from then on is read and thrown away as
/// long as it runs: a Python program whose output nobody takes would fail at its next print.
///
/// The process is a member of the child's process group, which keeps the system from giving the
/// child's number to another process while signals may still be sent to it.
class ChildLifeline {
  public:
    /// For the running child `child`, leader of a process group, whose output comes out of
    /// `output`. The lifeline holds if `error` is empty.
    ChildLifeline(pid_t child, int output, std::chrono::milliseconds pause);

    /// Lets the watching process act, as if the program had ended, unless `release` was called.
    ~ChildLifeline() = default;

    ChildLifeline(const ChildLifeline&) = delete;
    ChildLifeline& operator=(const ChildLifeline&) = delete;

    /// Why nobody watches; empty otherwise.
    QString error() const { return error_; }

    /// Whether the child may stay when the program ends; it may not until told so. Never blocks.
    void setMayOutlive(bool may);

    /// The child has ended: ends the watching process as well, and waits for it, which takes no
    /// longer than a signal does. Callable from another thread than the constructor's.
    void release();

  private:
    UniqueFd end_;
    pid_t watcher_ = -1;
    bool mayOutlive_ = false;
    QString error_;
};

} // namespace orv
