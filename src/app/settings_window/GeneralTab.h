#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

namespace orv {

class CardColumn;

/// Language, backend, display and sound, and every output.
QWidget* makeGeneralTab(const TabContext& context);

// The cards of the tab, in their order.
void addLanguageCard(CardColumn& column, const TabContext& context);
void addBackendCard(CardColumn& column, const TabContext& context);
void addDisplayCard(CardColumn& column, const TabContext& context);
void addBrowserOverlayCard(CardColumn& column, const TabContext& context);
void addVRChatCard(CardColumn& column, const TabContext& context);
void addVMixCard(CardColumn& column, const TabContext& context);
void addNotificationsCard(CardColumn& column, const TabContext& context);

/// Where a browser source finds the overlay, for a port as it is stored.
QString overlayAddress(std::int64_t port);

} // namespace orv
