#pragma once

#include "CloudSTTEngine.h"
#include "EngineTimings.h"
#include "ServiceEndpoints.h"

namespace orv {

/// Makes the four direct engines in front of these services.
CloudEngineFactory makeCloudEngine(ServiceEndpoints endpoints = {}, EngineTimings timings = {});

} // namespace orv
