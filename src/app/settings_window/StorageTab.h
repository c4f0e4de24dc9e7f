#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

/// The program's folders, and clearing up.
QWidget* makeStorageTab(const TabContext& context);

} // namespace orv
