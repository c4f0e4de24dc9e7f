#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

#include <memory>

namespace orv {

/// The settings window, not shown yet: 500 by 420 logical pixels, not to be resized, its title
/// always in the language of the interface. Closing hides it; it can be shown again.
std::unique_ptr<QWidget> makeSettingsWindow(SettingsEnvironment environment);

} // namespace orv
