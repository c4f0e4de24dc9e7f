#pragma once

#include <QList>
#include <QRect>
#include <QString>

#include <functional>

namespace orv {

/// What the program's item in the tray shows.
enum class TrayIcon { Idle, BackendRunning, Translating, Interrupted };

/// With which button the item was clicked; the secondary one asks for a menu.
enum class TrayClick { Primary, Secondary };

/// One line of the item's menu. Without a text it is a separator, without an action it only
/// informs.
struct TrayMenuItem {
    QString text = {};
    std::function<void()> action = {};
    QString shortcut = {}; ///< The key that chooses the line while the menu is open; may be empty.
};

/// The program's item in the desktop's tray, by which a program without windows is found: an icon
/// that answers clicks with a panel or a menu. Main thread only.
class Tray {
  public:
    /// Who answers the clicks.
    class Listener {
      public:
        /// Comes for each click.
        virtual void trayClicked(TrayClick click) = 0;

        /// `isAvailable` has changed.
        virtual void trayAvailabilityChanged(bool available) = 0;

      protected:
        ~Listener() = default;
    };

    virtual ~Tray() = default;

    /// One listener; null ends it.
    virtual void setListener(Listener* listener) = 0;

    /// Whether the desktop has a tray now.
    virtual bool isAvailable() const = 0;

    /// Shows `icon`; `description` says the same to people who do not see it.
    virtual void setIcon(TrayIcon icon, const QString& description) = 0;

    /// Shows a menu at the item. Chosen lines run their action later.
    virtual void showMenu(const QList<TrayMenuItem>& items) = 0;

    /// Where the item is on the screen; empty when the desktop does not tell.
    virtual QRect geometry() const = 0;
};

} // namespace orv
