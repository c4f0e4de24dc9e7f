#pragma once

#include "UpdateControl.h"

#include <memory>

namespace orv {

class UpdateChecker;

/// The update check as the settings window sees it. `checker` outlives it.
std::unique_ptr<UpdateControl> makeUpdateControl(UpdateChecker& checker);

} // namespace orv
