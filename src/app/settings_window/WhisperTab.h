#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

/// The model that the local recognition uses, and the models on this computer.
QWidget* makeWhisperTab(const TabContext& context);

} // namespace orv
