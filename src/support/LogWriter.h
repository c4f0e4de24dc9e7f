#pragma once

#include "LogCrashFlush.h"
#include "LogOutput.h"
#include "LogQueue.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <unistd.h>

namespace orv {

/// While it lives, `logLine` only puts lines into a queue, and a thread of its own ("log writer")
/// writes them to standard output: whoever reads there may pause, a terminal be held, and the
/// program goes on. The queue is bounded; LogQueue.h says what becomes of the lines that find no
/// room. One at a time, made and destroyed by the composition root.
///
/// A crash writes what waits before it takes its course (see LogCrashFlush.h), and so does `exit`.
class LogWriter {
  public:
    struct Limits {
        /// While somebody speaks, the program logs about 160 bytes a second in three lines: this
        /// is room for an hour, and memory that nobody misses.
        std::size_t room = 1024UL * 1024;
        /// For a reader that does not take the last lines when the program ends.
        std::chrono::milliseconds patienceAtEnd{2000};
    };

    LogWriter();
    explicit LogWriter(Limits limits);

    /// Writes what waits, as far as the reader takes it in time.
    ~LogWriter();

    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

  private:
    static void finishLiving();
    void finish();
    void run();
    bool hasFinished(LogOutput::State state);
    void waitForWork(LogOutput::State state) const;

    static std::atomic<LogWriter*> living_;

    const Limits limits_;
    const LogOutput output_{STDOUT_FILENO};
    LogQueue queue_;
    LogCrashFlush crashFlush_{queue_, output_};
    std::atomic<bool> finishing_ = false;
    std::chrono::steady_clock::time_point deadline_; ///< Set before `finishing_`.
    std::thread thread_;
};

} // namespace orv
