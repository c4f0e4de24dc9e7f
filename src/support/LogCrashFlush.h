#pragma once

#include "LogOutput.h"
#include "LogQueue.h"

#include <sys/types.h>

namespace orv {

/// While it lives, a crash of the process (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, and what ends
/// in them: std::terminate, qFatal) first writes the lines that wait in the queue; the signal then
/// does what it always does. A signal that has a handler already, like those of the sanitizers, is
/// left alone. One at a time.
///
/// A child made by `fork` leaves the parent's lines to the parent.
class LogCrashFlush {
  public:
    LogCrashFlush(LogQueue& queue, const LogOutput& output);
    ~LogCrashFlush();

    LogCrashFlush(const LogCrashFlush&) = delete;
    LogCrashFlush& operator=(const LogCrashFlush&) = delete;

    /// For the signal handler.
    void write();

  private:
    LogQueue& queue_;
    const LogOutput& output_;
    const pid_t process_;
};

} // namespace orv
