#include "SystemTray.h"

#include "ScreenPlacement.h"
#include "TemplateIcon.h"
#include "ThreadChecks.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPalette>
#include <QScreen>

#include <chrono>

// Outside the namespace, as the macro demands. Static libraries do not register resources alone.
static void registerTrayIcons() {
    Q_INIT_RESOURCE(tray);
}

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The desktop tells nobody when its tray comes or goes.
constexpr std::chrono::seconds availabilityInterval{3};

/// Between the item and its menu, in pixels.
constexpr int menuGap = 5;

} // namespace

QString traySymbol(TrayIcon icon) {
    switch (icon) {
    case TrayIcon::Translating:
        return u":/orvane/tray/translating.svg"_s;
    case TrayIcon::Interrupted:
        return u":/orvane/tray/interrupted.svg"_s;
    case TrayIcon::BackendRunning:
        return u":/orvane/tray/running.svg"_s;
    case TrayIcon::Idle:
        break;
    }
    return u":/orvane/tray/idle.svg"_s;
}

SystemTray::SystemTray() {
    registerTrayIcons();
    connect(&icon_, &QSystemTrayIcon::activated, this, &SystemTray::activated);
    connect(&menu_, &QMenu::aboutToShow, this, &SystemTray::menuAboutToShow);
    icon_.setContextMenu(&menu_);
    available_ = QSystemTrayIcon::isSystemTrayAvailable();
    connect(&availabilityCheck_, &QTimer::timeout, this, &SystemTray::checkAvailability);
    availabilityCheck_.start(availabilityInterval);
    QCoreApplication::instance()->installEventFilter(this);
}

void SystemTray::setListener(Listener* listener) {
    ORV_ON_MAIN();
    listener_ = listener;
}

bool SystemTray::isAvailable() const {
    ORV_ON_MAIN();
    return available_;
}

void SystemTray::setIcon(TrayIcon icon, const QString& description) {
    ORV_ON_MAIN();
    shown_ = icon;
    drawIcon();
    icon_.setToolTip(description);
    icon_.show();
}

void SystemTray::drawIcon() {
    ink_ = inkOn(QGuiApplication::palette().color(QPalette::Window));
    icon_.setIcon(templateIcon(traySymbol(shown_), ink_));
}

bool SystemTray::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange && icon_.isVisible() &&
        inkOn(QGuiApplication::palette().color(QPalette::Window)) != ink_) {
        drawIcon();
    }
    if (event->type() == QEvent::MouseButtonDblClick &&
        static_cast<const QMouseEvent*>(event)->button() == Qt::RightButton &&
        watched->inherits("QSystemTrayIconSys")) {
        // The second of two quick clicks asks for the menu, too; the toolkit swallows it.
        menu_.popup(icon_.geometry().bottomLeft());
        placeMenu();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void SystemTray::showMenu(const QList<TrayMenuItem>& items) {
    ORV_ON_MAIN();
    menu_.clear();
    for (const TrayMenuItem& item : items) {
        if (item.text.isEmpty()) {
            menu_.addSeparator();
            continue;
        }
        QAction* action = menu_.addAction(item.text);
        action->setEnabled(bool(item.action));
        action->setShortcut(QKeySequence(item.shortcut));
        if (item.action) {
            connect(action, &QAction::triggered, this, [run = item.action] { run(); });
        }
    }
    if (!menuAsked_) {
        menu_.popup(icon_.geometry().bottomLeft());
        placeMenu();
    }
}

QRect SystemTray::geometry() const {
    return icon_.geometry();
}

void SystemTray::activated(QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::Context) {
        placeMenu();
        return;
    }
    // The second of two quick clicks arrives as a double click only; it is a click like any other.
    if (listener_) {
        listener_->trayClicked(TrayClick::Primary);
    }
}

void SystemTray::menuAboutToShow() {
    if (menuAsked_ || !listener_) {
        return;
    }
    menuAsked_ = true;
    listener_->trayClicked(TrayClick::Secondary);
    menuAsked_ = false;
}

void SystemTray::placeMenu() {
    const QRect button = icon_.geometry();
    const QScreen* screen = QGuiApplication::screenAt(button.center());
    if (button.isEmpty() || screen == nullptr || !menu_.isVisible()) {
        return;
    }
    menu_.move(placeBeside(button, menu_.size(), screen->geometry(), menuGap));
}

void SystemTray::checkAvailability() {
    const bool available = QSystemTrayIcon::isSystemTrayAvailable();
    if (available == available_) {
        return;
    }
    available_ = available;
    if (listener_) {
        listener_->trayAvailabilityChanged(available);
    }
}

} // namespace orv
