#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <dlfcn.h>

namespace faults {

/// A name as a template's argument.
template <std::size_t Size>
struct Name {
    // NOLINTNEXTLINE(*-explicit-*): so that a literal can stand for it.
    constexpr Name(const char (&from)[Size]) { std::copy_n(from, Size, text); }

    char text[Size] = {};
};

/// The function called `name` that the program would have without this library. Looked up at the
/// first use, which may be before this library's own start.
template <Name name, typename Function>
Function* next() {
    static std::atomic<Function*> found = nullptr;
    Function* function = found.load(std::memory_order_acquire);
    if (function == nullptr) {
        function = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name.text));
        found.store(function, std::memory_order_release);
    }
    return function;
}

} // namespace faults
