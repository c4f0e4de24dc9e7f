#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

#include <memory>

namespace orv {

/// The settings window, not shown yet: 500 by 420 logical pixels, its title in the language of the
/// interface. Closing hides it; it can be shown again.
std::unique_ptr<QWidget> makeSettingsWindow(SettingsEnvironment environment);

} // namespace orv
