#include "BackendInstallerPath.h"

namespace orv {

QString backendInstaller() {
    return QStringLiteral(ORVANE_BACKEND_INSTALLER);
}

} // namespace orv
