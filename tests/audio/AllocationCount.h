#pragma once

#include <cstddef>

namespace orv::test {

/// How often memory has been allocated so far on the calling thread: by `new` and, in builds
/// without a sanitizer (which has an allocator of its own), by `malloc` and its kin as well, so
/// also by Qt and C libraries.
std::size_t allocationCount();

/// Whether `allocationCount` sees `malloc`.
bool countsMalloc();

} // namespace orv::test
