#pragma once

#include "EngineDescriptor.h"

namespace orv {

/// Google's streaming recognition, which the speech server talks to; the program has its texts
/// translated.
EngineDescriptor googleStreamingEngine();

/// The locations of this service, in the order in which they are offered.
std::span<const ServiceRegion> googleLocations();

} // namespace orv
