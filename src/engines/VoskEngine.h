#pragma once

#include "EngineDescriptor.h"

namespace orv {

/// A Vosk server of the user's own, which the speech server talks to.
EngineDescriptor voskEngine();

} // namespace orv
