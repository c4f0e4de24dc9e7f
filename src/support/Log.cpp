#include "Log.h"

#include "LogOutput.h"
#include "LogQueue.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <mutex>
#include <pthread.h>
#include <string_view>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Keeps this thread from being hit by SIGPIPE while it lives, and swallows one that came up in
/// between, without touching what the program itself wants done with the signal.
class NoBrokenPipeSignal {
  public:
    NoBrokenPipeSignal() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        wasPending_ = isPending();
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }

    ~NoBrokenPipeSignal() {
        if (!wasPending_ && isPending()) {
            int number = 0;
            sigwait(&pipe_, &number);
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

  private:
    static bool isPending() {
        sigset_t pending = {};
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t pipe_ = {};
    sigset_t before_ = {};
    bool wasPending_ = false;
};

/// Writes lines where they are logged.
class DirectWriter {
  public:
    void write(std::string_view line) {
        const std::lock_guard lock(mutex_);
        const NoBrokenPipeSignal guard;
        const LogOutput output(STDOUT_FILENO);
        if (isWithinLine_ && !writeAll(output, "\n")) {
            return;
        }
        writeAll(output, line);
    }

    /// The reader took none of what somebody else had to write for a long time.
    void noteHeld(bool isWithinLine) {
        const std::lock_guard lock(mutex_);
        isHeld_ = true;
        isWithinLine_ = isWithinLine;
    }

  private:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    bool writeAll(const LogOutput& output, std::string_view bytes) {
        const auto deadline = Clock::now() + (isHeld_ ? Milliseconds(0) : Milliseconds(2000));
        for (;;) {
            const LogOutput::Outcome outcome = output.write(bytes.data(), bytes.size());
            isHeld_ = outcome.state == LogOutput::State::Full;
            isWithinLine_ = isHeld_ && (isWithinLine_ || outcome.count > 0);
            if (!isHeld_) {
                return outcome.state == LogOutput::State::Taken;
            }
            const auto left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
            if (left <= Milliseconds(0)) {
                return false;
            }
            bytes.remove_prefix(outcome.count);
            output.wait(left);
        }
    }

    std::mutex mutex_;          ///< Keeps lines whole that take more than one call.
    bool isHeld_ = false;       ///< Do not wait again for a reader that was waited for.
    bool isWithinLine_ = false; ///< Of a line only the beginning was taken.
};

struct LogState {
    std::mutex mutex; ///< Guards `sink` and `queue`.
    LogSink sink;
    LogQueue* queue = nullptr;
    DirectWriter direct;
};

/// Never destroyed: static objects may log when they go.
LogState& logState() {
    static LogState& state = *new LogState;
    return state;
}

/// A child made by `fork` has no thread that would write its lines, so it writes them itself.
void writeDirectlyInForkedChildren() {
    ::pthread_atfork([] { logState().mutex.lock(); }, [] { logState().mutex.unlock(); },
                     [] {
                         logState().queue = nullptr;
                         logState().mutex.unlock();
                     });
}

bool pushed(LogState& state, LogLine::Pointer& line) {
    const std::lock_guard lock(state.mutex);
    if (state.queue == nullptr) {
        return false;
    }
    state.queue->push(std::move(line));
    return true;
}

} // namespace

void logLine(QStringView line) {
    LogState& state = logState();
    LogSink sink;
    {
        const std::lock_guard lock(state.mutex);
        sink = state.sink;
    }
    if (sink) {
        sink(line.toString());
        return;
    }
    if (LogLine::Pointer bytes = LogLine::make(line); !pushed(state, bytes)) {
        state.direct.write(bytes->bytes());
    }
}

LogSink setLogSink(LogSink sink) {
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    return std::exchange(state.sink, std::move(sink));
}

void openLogQueue(LogQueue& queue) {
    static const bool once = [] {
        writeDirectlyInForkedChildren();
        return true;
    }();
    static_cast<void>(once);
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    state.queue = &queue;
}

bool closeLogQueue(LogQueue& queue, bool late) {
    LogState& state = logState();
    const std::lock_guard lock(state.mutex);
    if (!queue.isEmpty() && !late) {
        return false;
    }
    if (late) {
        state.direct.noteHeld(queue.isWithinLine());
    }
    state.queue = nullptr;
    return true;
}

QString boolText(bool value) {
    return value ? u"true"_s : u"false"_s;
}

} // namespace orv
