#include "SettingsIcons.h"

#include <QDir>

// Outside the namespace, as the macro demands. Static libraries do not register resources alone.
static void registerIcons() {
    Q_INIT_RESOURCE(settings);
}

namespace orv {

void registerSettingsIcons() {
    registerIcons();
}

} // namespace orv
