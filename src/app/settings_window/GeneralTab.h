#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

class CardColumn;

/// Language, backend, display and sound, and every output.
QWidget* makeGeneralTab(const TabContext& context);

// The cards of the tab, in their order; those of the outputs stand before the last.
void addLanguageCard(CardColumn& column, const TabContext& context);
void addBackendCard(CardColumn& column, const TabContext& context);
void addDisplayCard(CardColumn& column, const TabContext& context);
void addNotificationsCard(CardColumn& column, const TabContext& context);

} // namespace orv
