#include "TrayMenu.h"

#include <QAction>
#include <QKeyEvent>
#include <QKeySequence>

namespace orv {

void TrayMenu::keyPressEvent(QKeyEvent* event) {
    const QKeySequence pressed(event->keyCombination());
    for (QAction* action : actions()) {
        if (action->isEnabled() && !action->shortcut().isEmpty() && action->shortcut() == pressed) {
            close();
            action->trigger();
            return;
        }
    }
    QMenu::keyPressEvent(event);
}

} // namespace orv
