#pragma once

/// Checks of which thread a function runs on, in every build but those that people run.
///
///     ORV_ON_MAIN();      // the thread of the application object
///     ORV_ON(queue_);     // the thread of a `SerialQueue` or an `EventLoopThread`
///
/// They stand at a function's beginning. On another thread they say the function's name and end the
/// process.

#ifdef NDEBUG
#define ORV_ON_MAIN() static_cast<void>(0)
#define ORV_ON(thread) static_cast<void>(sizeof(thread))
#else
#define ORV_ON_MAIN() ::orv::threadChecks::demand(::orv::threadChecks::isMain(), Q_FUNC_INFO)
#define ORV_ON(thread) ::orv::threadChecks::demand((thread).isCurrent(), Q_FUNC_INFO)
#endif

#include <QtGlobal>

namespace orv::threadChecks {

/// Whether this is the application object's thread. True everywhere while there is none, as in
/// tests of values.
bool isMain();

/// Ends the process with `function` in the message unless `isRight`.
void demand(bool isRight, const char* function);

} // namespace orv::threadChecks
