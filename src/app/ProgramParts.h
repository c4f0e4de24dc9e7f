#pragma once

#include "EngineCatalogue.h"
#include "ServiceAddresses.h"

#include <vector>

namespace orv {

class Output;

/// The parts of the program that whoever runs it may replace or add to. The defaults are what users
/// get.
struct ProgramParts {
    ServiceAddresses addresses = {};
    EngineCatalogue engines = {};
    std::vector<Output*> outputs = {}; ///< Behind the program's own. They outlive it.
};

} // namespace orv
