#include "SettingsWindow.h"

#include "L10n.h"
#include "SettingsView.h"

#include <utility>

namespace orv {

namespace {

constexpr QSize contentSize(500, 420);

} // namespace

std::unique_ptr<QWidget> makeSettingsWindow(SettingsEnvironment environment) {
    L10n& l10n = environment.l10n;
    auto view = std::make_unique<SettingsView>(std::move(environment));
    SettingsView* shown = view.get();
    view->setFixedSize(contentSize);
    view->setWindowTitle(view->title());
    QObject::connect(&l10n, &L10n::currentChanged, shown,
                     [shown] { shown->setWindowTitle(shown->title()); });
    return view;
}

} // namespace orv
