#pragma once

namespace orv {

class DefaultsStore;

/// First step of the launch, before the settings object is made: registers the values that answer
/// for keys the user has not set. "autoGain" is on here though the settings' own default is off: a
/// new user starts with auto-gain.
void registerDefaultValues(DefaultsStore& store);

} // namespace orv
