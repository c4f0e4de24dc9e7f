#pragma once

#include <chrono>
#include <functional>

namespace orv::test {

/// Runs the event loop until `condition` holds. Returns false when it still does not after `limit`,
/// which only bounds how long a broken program can hold up the tests.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(60));

/// Runs the event loop until everything posted to this thread so far has run.
void drainEvents();

} // namespace orv::test
