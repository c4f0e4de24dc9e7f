#pragma once

#include <QMenu>

namespace orv {

/// A menu whose shortcuts work while it is open. Those of a plain QMenu work only in the window
/// that has the focus, which a tray's menu does not belong to.
class TrayMenu : public QMenu {
    Q_OBJECT

  public:
    using QMenu::QMenu;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace orv
