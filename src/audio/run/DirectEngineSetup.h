#pragma once

#include "CloudSTTEngine.h"
#include "ConfigMessage.h"
#include "DirectEngineSession.h"

#include <memory>

namespace orv {

struct AudioEnvironment;

/// Makes the direct engine that the setting `sttEngine` names, saying what it does in the log. Null
/// when the run goes through the backend. The session is not connected yet.
std::unique_ptr<DirectEngineSession> setupDirectEngine(const AudioEnvironment& environment,
                                                       const RunConfiguration& run);

/// The configuration that the chosen engine is connected with.
CloudEngineConfig directEngineConfig(const AudioEnvironment& environment,
                                     const RunConfiguration& run);

} // namespace orv
