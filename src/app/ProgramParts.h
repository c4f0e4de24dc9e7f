#pragma once

#include "EngineCatalogue.h"
#include "ServiceAddresses.h"

#include <vector>

namespace orv {

class Output;

/// What may be exchanged about the program from outside. The defaults are what users get.
struct ProgramParts {
    ServiceAddresses addresses = {};
    EngineCatalogue engines = {};
    std::vector<Output*> outputs = {}; ///< Behind the program's own. They outlive it.
};

} // namespace orv
