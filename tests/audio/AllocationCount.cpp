#include "AllocationCount.h"

#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORV_SANITIZED 1
#else
#define ORV_SANITIZED 0
#endif

namespace {

thread_local std::size_t count = 0;

} // namespace

namespace orv::test {

std::size_t allocationCount() {
    return count;
}

bool countsMalloc() {
    return ORV_SANITIZED == 0;
}

} // namespace orv::test

#if ORV_SANITIZED

void* operator new(std::size_t size) {
    ++count;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

#else

// The C library lets a program put its own functions in front of the allocator's, which stay
// reachable under these names. `new` goes through malloc.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t size) noexcept {
    ++count;
    return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) noexcept {
    ++count;
    return __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) noexcept {
    ++count;
    return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    ++count;
    return __libc_memalign(alignment, size);
}
}

#endif
