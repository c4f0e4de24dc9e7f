#pragma once

#include "Dialogs.h"
#include "TextLookup.h"

#include <QString>

namespace orv {

/// There is no backend. When its installation is offered, the first button asks for it.
Alert notInstalledAlert(const TextLookup& text, bool offersInstallation);

/// An installation came to nothing; `reason` is for people.
Alert installationFailedAlert(const TextLookup& text, const QString& reason);

} // namespace orv
