#pragma once

#include <QString>

namespace orv {

/// Absolute path of the program that installs the speech server, as the build was told it. The
/// program may be missing; running it then fails with a reason.
QString backendInstaller();

} // namespace orv
