#include "SettingsWindow.h"

#include "L10n.h"
#include "SettingsView.h"

#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace orv {

namespace {

constexpr QSize contentSize(500, 420);

} // namespace

std::unique_ptr<QWidget> makeSettingsWindow(SettingsEnvironment environment) {
    L10n& l10n = environment.l10n;
    auto view = std::make_unique<SettingsView>(std::move(environment));
    SettingsView* shown = view.get();
    view->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    view->setMinimumSize(contentSize);
    view->resize(contentSize);
    view->setWindowTitle(view->title());
    QObject::connect(&l10n, &L10n::currentChanged, shown,
                     [shown] { shown->setWindowTitle(shown->title()); });
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect available = screen->availableGeometry();
        view->move(available.center() - QPoint(contentSize.width(), contentSize.height()) / 2);
    }
    return view;
}

} // namespace orv
