#pragma once

#include "Tray.h"
#include "TrayMenu.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QSystemTrayIcon>
#include <QTimer>

namespace orv {

/// The resource with the icon's drawing, whose shape alone counts.
QString traySymbol(TrayIcon icon);

/// The program's item in the desktop's notification area.
class SystemTray : public QObject, public Tray {
    Q_OBJECT

  public:
    SystemTray();

    void setListener(Listener* listener) override;
    bool isAvailable() const override;
    void setIcon(TrayIcon icon, const QString& description) override;
    void showMenu(const QList<TrayMenuItem>& items) override;
    QRect geometry() const override;

    /// The desktop has become light or dark.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void activated(QSystemTrayIcon::ActivationReason reason);
    void menuAboutToShow();
    void placeMenu();
    void checkAvailability();
    void drawIcon();

    TrayMenu menu_; ///< Outlives `icon_`, which refers to it.
    QSystemTrayIcon icon_;
    TrayIcon shown_ = TrayIcon::Idle;
    QColor ink_; ///< Of the icon as it is drawn.
    Listener* listener_ = nullptr;
    QTimer availabilityCheck_;
    bool available_ = false;
    bool menuAsked_ = false; ///< The desktop itself is about to show the menu.
};

} // namespace orv
