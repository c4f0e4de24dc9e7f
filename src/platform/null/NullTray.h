#pragma once

#include "Tray.h"

namespace orv {

/// The tray of a desktop that has none.
class NullTray : public Tray {
  public:
    bool isAvailable() const override { return false; }

    void setAvailabilityHandler(std::function<void(bool available)> /*handler*/) override {}

    void setIcon(TrayIcon /*icon*/, const QString& /*description*/) override {}

    void setClickHandler(std::function<void(TrayClick click)> /*handler*/) override {}

    void showMenu(const QList<TrayMenuItem>& /*items*/) override {}

    QRect geometry() const override { return {}; }
};

} // namespace orv
