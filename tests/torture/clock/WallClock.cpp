// Sets the wall clock of the program that it is loaded into, for LD_PRELOAD: the file that is named
// in ORVANE_CLOCK holds, as eight bytes of this machine, by how many nanoseconds it differs from
// the system's. Who sets the clock writes them there; the program sees it with its next look.
//
// What counts for a clock that nobody sets is left alone. So are waits until a moment of the wall
// clock: nothing of the program waits so.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {

using Shift = std::atomic<std::int64_t>;
static_assert(Shift::is_always_lock_free && sizeof(Shift) == sizeof(std::int64_t));

constexpr std::int64_t nanosecondsInSecond = 1000000000;
constexpr std::int64_t nanosecondsInMicrosecond = 1000;

/// Null without the file.
const Shift* openShift() {
    const char* const path = std::getenv("ORVANE_CLOCK");
    const int file = path == nullptr ? -1 : ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    void* const mapped = ::mmap(nullptr, sizeof(Shift), PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    return mapped == MAP_FAILED ? nullptr : static_cast<const Shift*>(mapped);
}

using ClockGettime = int(clockid_t, timespec*);

/// The wall clock as it has been set.
std::int64_t wallClock(clockid_t clock) {
    static auto* const real = reinterpret_cast<ClockGettime*>(::dlsym(RTLD_NEXT, "clock_gettime"));
    static const Shift* const shift = openShift();
    timespec now = {};
    real(clock, &now);
    const std::int64_t shifted = shift == nullptr ? 0 : shift->load(std::memory_order_relaxed);
    return now.tv_sec * nanosecondsInSecond + now.tv_nsec + shifted;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static auto* const real = reinterpret_cast<ClockGettime*>(::dlsym(RTLD_NEXT, "clock_gettime"));
    if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE) {
        return real(clock, now);
    }
    const std::int64_t wall = wallClock(clock);
    *now = {.tv_sec = wall / nanosecondsInSecond, .tv_nsec = wall % nanosecondsInSecond};
    return 0;
}

int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    const std::int64_t wall = wallClock(CLOCK_REALTIME);
    *now = {.tv_sec = wall / nanosecondsInSecond,
            .tv_usec = wall % nanosecondsInSecond / nanosecondsInMicrosecond};
    return 0;
}

time_t time(time_t* now) noexcept {
    const time_t seconds = wallClock(CLOCK_REALTIME) / nanosecondsInSecond;
    if (now != nullptr) {
        *now = seconds;
    }
    return seconds;
}
}
