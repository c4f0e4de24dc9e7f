#pragma once

#include <QList>
#include <QRect>
#include <QString>

#include <functional>

namespace orv {

/// What the program's item in the tray shows.
enum class TrayIcon { Idle, BackendRunning, Translating };

enum class TrayClick { Primary, Secondary };

/// One line of the item's menu. Without a text it is a separator, without an action it only
/// informs.
struct TrayMenuItem {
    QString text = {};
    std::function<void()> action = {};
    QString shortcut = {}; ///< The key that chooses the line while the menu is open; may be empty.
};

/// The place on the desktop where a program without windows is found: an item with an icon that
/// answers clicks with a panel or a menu. Main thread only.
class Tray {
  public:
    virtual ~Tray() = default;

    /// Whether the desktop has such a place now.
    virtual bool isAvailable() const = 0;

    /// Called whenever that changes. One handler; an empty one ends it.
    virtual void setAvailabilityHandler(std::function<void(bool available)> handler) = 0;

    /// Shows `icon`; `description` says the same to people who do not see it.
    virtual void setIcon(TrayIcon icon, const QString& description) = 0;

    /// Called for each click, `Secondary` for the one that asks for a menu. One handler.
    virtual void setClickHandler(std::function<void(TrayClick click)> handler) = 0;

    /// Shows a menu at the item. Chosen lines run their action later.
    virtual void showMenu(const QList<TrayMenuItem>& items) = 0;

    /// Where the item is on the screen; empty when the desktop does not tell.
    virtual QRect geometry() const = 0;
};

} // namespace orv
