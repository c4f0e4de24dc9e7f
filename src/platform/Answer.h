#pragma once

#include <functional>

namespace orv {

/// How whoever asks the platform for something is told what came of it: called at most once, later,
/// on the main thread, and never once the object that was asked is destroyed. An operation's
/// comment says what `Values` are, and when there is no answer at all.
template <typename... Values>
using Answer = std::function<void(Values...)>;

} // namespace orv
