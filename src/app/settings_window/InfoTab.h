#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

/// The program, what it works with, and the check for a newer release.
QWidget* makeInfoTab(const TabContext& context);

} // namespace orv
