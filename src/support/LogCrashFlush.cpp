#include "LogCrashFlush.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <unistd.h>

namespace orv {

namespace {

// What is read at all is read within this; nobody wants to wait for the end of what has crashed.
constexpr std::chrono::milliseconds patience{300};

// The thread sanitizer has handlers for the others, which it does not admit to.
#ifdef ORVANE_TSAN
constexpr std::array crashSignals = {SIGABRT};
#else
constexpr std::array crashSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
#endif

// A signal handler can reach nothing but statics.
std::atomic<LogCrashFlush*> living = nullptr;
static_assert(std::atomic<LogCrashFlush*>::is_always_lock_free);

/// All signals are blocked meanwhile: the one raised here comes, with the state of the crash, when
/// the handler returns.
extern "C" void flushAndEnd(int number) {
    if (LogCrashFlush* const flush = living.exchange(nullptr)) {
        flush->write();
    }
    ::signal(number, SIG_DFL);
    ::raise(number);
}

void replaceHandler(int number, void (*expected)(int), void (*handler)(int)) {
    struct sigaction action = {};
    if (::sigaction(number, nullptr, &action) != 0 || (action.sa_flags & SA_SIGINFO) != 0 ||
        action.sa_handler != expected) {
        return;
    }
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_ONSTACK;
    sigfillset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

} // namespace

LogCrashFlush::LogCrashFlush(LogQueue& queue, const LogOutput& output)
    : queue_(queue)
    , output_(output)
    , process_(::getpid()) {
    living = this;
    for (const int number : crashSignals) {
        replaceHandler(number, SIG_DFL, flushAndEnd);
    }
}

LogCrashFlush::~LogCrashFlush() {
    for (const int number : crashSignals) {
        replaceHandler(number, flushAndEnd, SIG_DFL);
    }
    living = nullptr;
}

void LogCrashFlush::write() {
    if (::getpid() == process_) {
        queue_.writeAfterCrash(output_, patience);
    }
}

} // namespace orv
