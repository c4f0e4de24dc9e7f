// The calls that start other programs. The program itself uses `posix_spawn` only; the libraries
// below it fork, and QProcess of Debian 12's Qt calls `clone`. What the C library does within
// `posix_spawn` is out of reach, so that fails as a whole, also for a program that cannot be run.

#include "Next.h"
#include "Request.h"

#include <cerrno>
#include <cstdarg>
#include <sched.h>
#include <spawn.h>
#include <unistd.h>

using faults::consider;
using faults::next;

extern "C" pid_t fork() noexcept {
    const auto verdict = consider({.call = "fork"});
    if (verdict.fails()) {
        errno = verdict.error;
        return -1;
    }
    return next<"fork", decltype(fork)>()();
}

extern "C" int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
    std::va_list values;
    va_start(values, argument);
    auto* const parent = va_arg(values, pid_t*);
    auto* const storage = va_arg(values, void*);
    auto* const child = va_arg(values, pid_t*);
    va_end(values);
    const auto verdict = consider({.call = "clone"});
    if (verdict.fails()) {
        errno = verdict.error;
        return -1;
    }
    return next<"clone", decltype(clone)>()(function, stack, flags, argument, parent, storage,
                                            child);
}

extern "C" int posix_spawn(pid_t* process, const char* path,
                           const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const arguments[],
                           char* const environment[]) {
    const auto verdict = consider({.call = "posix_spawn", .path = path});
    if (verdict.fails()) {
        return verdict.error;
    }
    return next<"posix_spawn", decltype(posix_spawn)>()(process, path, actions, attributes,
                                                        arguments, environment);
}

extern "C" int posix_spawnp(pid_t* process, const char* file,
                            const posix_spawn_file_actions_t* actions,
                            const posix_spawnattr_t* attributes, char* const arguments[],
                            char* const environment[]) {
    const auto verdict = consider({.call = "posix_spawn", .path = file});
    if (verdict.fails()) {
        return verdict.error;
    }
    return next<"posix_spawnp", decltype(posix_spawnp)>()(process, file, actions, attributes,
                                                          arguments, environment);
}

extern "C" int execve(const char* path, char* const arguments[],
                      char* const environment[]) noexcept {
    const auto verdict = consider({.call = "execve", .path = path});
    if (verdict.fails()) {
        errno = verdict.error;
        return -1;
    }
    return next<"execve", decltype(execve)>()(path, arguments, environment);
}
