#pragma once

namespace faults {

/// A call that may be failed.
struct Request {
    const char* call;

    /// What it is about, where the call has no descriptor; only the address of a literal.
    const char* subject = "";

    /// What it is about: the kind of this descriptor is its subject. -1 for none.
    int descriptor = -1;

    /// The file it is about, or null.
    const char* path = nullptr;

    /// Whether this call would return at once rather than wait, whatever its descriptor does.
    bool isNonblocking = false;
};

/// What becomes of a call.
struct Verdict {
    enum class Kind {
        Goes, ///< As if nobody had looked.
        Fails,
        FallsShort ///< Is made for half of what it is asked for.
    };

    Kind kind = Kind::Goes;
    int error = 0; ///< Of one that fails, a value of `errno`.

    bool fails() const { return kind == Kind::Fails; }

    bool fallsShort() const { return kind == Kind::FallsShort; }
};

/// Looks where the call comes from, and decides. Callable from any thread, also within a signal
/// handler; asks for no memory. Leaves `errno` as it is.
Verdict consider(const Request& request);

} // namespace faults
