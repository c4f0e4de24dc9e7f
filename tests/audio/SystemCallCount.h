#pragma once

#include <cstddef>

namespace orv::test {

/// Counts the system calls that the calling thread makes while the object lives: the kernel hands
/// each of them to a signal handler, which makes it in the thread's stead. One object at a time in
/// the whole program, which has SIGSYS to itself.
class SystemCallCount {
  public:
    SystemCallCount();
    ~SystemCallCount();

    SystemCallCount(const SystemCallCount&) = delete;
    SystemCallCount& operator=(const SystemCallCount&) = delete;

    /// Whether calls are counted here: not on every kernel and processor, nor under a sanitizer,
    /// which handles signals itself.
    static bool isPossible();

    /// Calls so far, but for those that `wakes` counts.
    static std::size_t calls();

    /// Calls so far that wait for another thread or wake it (futex).
    static std::size_t wakes();
};

} // namespace orv::test
