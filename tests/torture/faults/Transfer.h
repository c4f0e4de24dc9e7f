#pragma once

#include "Request.h"

#include <cerrno>
#include <cstddef>
#include <sys/types.h>

namespace faults {

/// For calls that return -1 when they fail.
template <typename Perform>
int performed(const Request& request, Perform perform) {
    const Verdict verdict = consider(request);
    if (verdict.fails()) {
        errno = verdict.error;
        return -1;
    }
    return perform();
}

/// For calls that move bytes (or parts of a list): `perform` moves so many and says how many it has
/// moved, or -1.
template <typename Perform>
ssize_t transfer(const Request& request, std::size_t size, Perform perform) {
    const Verdict verdict = consider(request);
    if (verdict.fails()) {
        errno = verdict.error;
        return -1;
    }
    return perform(verdict.fallsShort() && size > 1 ? size / 2 : size);
}

} // namespace faults
