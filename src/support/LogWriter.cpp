#include "LogWriter.h"

#include "Log.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <pthread.h>

namespace orv {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// A full output gets time to become emptier by more than a line, and one that says that it takes
// more, and does not, is not asked without end.
constexpr Milliseconds pauseWhenFull{5};

/// Signals are for other threads: a broken pipe is none of the program's business, and a request to
/// end must not come in the middle of a line. Only what this thread does wrong itself reaches it.
void blockSignals() {
    sigset_t signals = {};
    sigfillset(&signals);
    for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        sigdelset(&signals, own);
    }
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

std::atomic<LogWriter*> LogWriter::living_ = nullptr;

LogWriter::LogWriter()
    : LogWriter(Limits()) {}

LogWriter::LogWriter(Limits limits)
    : limits_(limits)
    , queue_(limits.room)
    , thread_([this] { run(); }) {
    static const int registered = std::atexit(finishLiving);
    static_cast<void>(registered);
    living_ = this;
    openLogQueue(queue_);
}

LogWriter::~LogWriter() {
    living_ = nullptr;
    finish();
}

/// For a library that ends the program by `exit`, which destroys nothing on the stack.
void LogWriter::finishLiving() {
    if (LogWriter* const writer = living_) {
        writer->finish();
    }
}

void LogWriter::finish() {
    if (thread_.joinable()) {
        deadline_ = Clock::now() + limits_.patienceAtEnd;
        finishing_ = true;
        queue_.wakeWriter();
        thread_.join();
    }
}

void LogWriter::run() {
    ::pthread_setname_np(::pthread_self(), "log writer");
    blockSignals();
    LogOutput::State state = queue_.writeTo(output_);
    while (!hasFinished(state)) {
        waitForWork(state);
        queue_.noteWoken();
        state = queue_.writeTo(output_);
    }
}

/// When asked to, once all is written or the reader was waited for long enough.
bool LogWriter::hasFinished(LogOutput::State state) {
    const bool isFull = state == LogOutput::State::Full;
    return finishing_ && closeLogQueue(queue_, isFull && Clock::now() >= deadline_);
}

void LogWriter::waitForWork(LogOutput::State state) const {
    if (state != LogOutput::State::Full) {
        queue_.waitForWake(finishing_ ? Milliseconds(0) : queue_.longestWait());
        return;
    }
    queue_.waitForWake(pauseWhenFull);
    if (finishing_) {
        const auto left = std::chrono::ceil<Milliseconds>(deadline_ - Clock::now());
        output_.wait(std::max(left, Milliseconds(0)));
    } else {
        output_.wait(queue_.longestWait(), queue_.wakeDescriptor());
    }
}

} // namespace orv
