#pragma once

#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orv::test {

/// Runs `body` in a child made by `fork` and returns how that ended (see waitpid): by status 0
/// where `body` returns.
inline int statusOfForked(const std::function<void()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit none = {};
        ::setrlimit(RLIMIT_CORE, &none);
        body();
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

/// The signal that a child ended by; 0 if it was none.
inline int signalThatEnded(int status) {
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

} // namespace orv::test
