#pragma once

#include "Tray.h"

namespace orv {

/// The tray of a desktop that has none.
class NullTray : public Tray {
  public:
    void setListener(Listener* /*listener*/) override {}

    bool isAvailable() const override { return false; }

    void setIcon(TrayIcon /*icon*/, const QString& /*description*/) override {}

    void showMenu(const QList<TrayMenuItem>& /*items*/) override {}

    QRect geometry() const override { return {}; }
};

} // namespace orv
