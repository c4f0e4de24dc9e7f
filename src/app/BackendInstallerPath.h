#pragma once

#include <QString>

namespace orv {

/// Absolute path of the program that installs the speech server: the one that was installed with
/// this program ("../share/orvane/scripts/install-backend" from its folder), else the one that the
/// build was told of. It may be missing; running it then fails with a reason. Needs the application
/// object.
QString backendInstaller();

} // namespace orv
