#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

/// The list of engines, what the chosen one needs, and who does what with it.
QWidget* makeEnginesTab(const TabContext& context);

} // namespace orv
