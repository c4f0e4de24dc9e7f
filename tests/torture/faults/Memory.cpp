// The calls that ask for memory, for large pieces: a small one is never refused on Linux. `operator
// new` asks here, too. The C library's own names are used for the rest of the way, since looking a
// name up may ask for memory.

#include "Request.h"

#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);                    // NOLINT(*-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size); // NOLINT(*-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);     // NOLINT(*-reserved-identifier)
}

namespace {

constexpr std::size_t large = std::size_t(1) << 20;

bool isRefused(const char* call, std::size_t size) {
    if (size < large) {
        return false;
    }
    const auto verdict = faults::consider({.call = call});
    if (verdict.fails()) {
        errno = verdict.error;
    }
    return verdict.fails();
}

} // namespace

extern "C" void* malloc(std::size_t size) noexcept {
    return isRefused("malloc", size) ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept {
    std::size_t whole = 0;
    if (__builtin_mul_overflow(count, size, &whole)) {
        whole = 0; // Refused by the C library itself.
    }
    return isRefused("malloc", whole) ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept {
    return isRefused("realloc", size) ? nullptr : __libc_realloc(memory, size);
}
