#pragma once

#include "EngineDescriptor.h"

namespace orv {

/// Whisper, which the speech server runs: needs no account, so it stands in for engines that lack
/// theirs. Its models have a tab of their own in the settings window.
EngineDescriptor whisperEngine();

} // namespace orv
