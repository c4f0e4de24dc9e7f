#pragma once

#include "ProgramParts.h"

namespace orv {

/// The whole program: makes the application object and the shell, runs the event loop, takes
/// everything down again. Returns the exit status. To be called once, from `main`.
int runApplication(int argc, char** argv, const ProgramParts& parts = {});

} // namespace orv
