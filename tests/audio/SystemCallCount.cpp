#include "SystemCallCount.h"

#include "AllocationCount.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace orv::test {

namespace {

#if defined(__x86_64__) && defined(PR_SET_SYSCALL_USER_DISPATCH)

// What the kernel reads before each call of the thread.
volatile char dispatch = SYSCALL_DISPATCH_FILTER_ALLOW;
volatile std::size_t callCount = 0;
volatile std::size_t wakeCount = 0;

/// Makes the call that was stopped, and leaves its result where the caller expects it.
void makeCall(int /*signal*/, siginfo_t* info, void* context) {
    dispatch = SYSCALL_DISPATCH_FILTER_ALLOW;
    const int errorBefore = errno;
    if (info->si_syscall == SYS_futex) {
        wakeCount = wakeCount + 1;
    } else {
        callCount = callCount + 1;
    }
    greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    const long result =
        syscall(info->si_syscall, registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                registers[REG_R10], registers[REG_R8], registers[REG_R9]);
    registers[REG_RAX] = result == -1 ? -errno : result;
    errno = errorBefore;
    dispatch = SYSCALL_DISPATCH_FILTER_BLOCK;
}

/// As the kernel knows a signal's handler.
struct KernelAction {
    void* handler = nullptr;
    unsigned long flags = 0;
    void* restorer = nullptr; ///< The code by which a handler returns; its call must pass.
    std::uint64_t mask = 0;
};

bool setDispatch(bool on) {
    if (!on) {
        return prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0L, 0L, 0L) == 0;
    }
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = makeCall;
    sigaction(SIGSYS, &action, nullptr);
    KernelAction known;
    syscall(SYS_rt_sigaction, SIGSYS, nullptr, &known, sizeof known.mask);
    constexpr long restorerSize = 16;
    return prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, known.restorer, restorerSize,
                 &dispatch) == 0;
}

#endif

} // namespace

#if defined(__x86_64__) && defined(PR_SET_SYSCALL_USER_DISPATCH)

SystemCallCount::SystemCallCount() {
    callCount = 0;
    wakeCount = 0;
    if (isPossible() && setDispatch(true)) {
        dispatch = SYSCALL_DISPATCH_FILTER_BLOCK;
    }
}

SystemCallCount::~SystemCallCount() {
    dispatch = SYSCALL_DISPATCH_FILTER_ALLOW;
    setDispatch(false);
}

bool SystemCallCount::isPossible() {
    static const bool possible = countsMalloc() && setDispatch(true) && setDispatch(false);
    return possible;
}

std::size_t SystemCallCount::calls() {
    return callCount;
}

std::size_t SystemCallCount::wakes() {
    return wakeCount;
}

#else

SystemCallCount::SystemCallCount() = default;
SystemCallCount::~SystemCallCount() = default;

bool SystemCallCount::isPossible() {
    return false;
}

std::size_t SystemCallCount::calls() {
    return 0;
}

std::size_t SystemCallCount::wakes() {
    return 0;
}

#endif

} // namespace orv::test
