#include "KeptWindow.h"

#include "ThreadChecks.h"

#include <QScreen>

#include <utility>

namespace orv {

KeptWindow::KeptWindow(std::function<std::unique_ptr<QWidget>()> make)
    : make_(std::move(make)) {}

void KeptWindow::show() {
    ORV_ON_MAIN();
    if (!make_) {
        return;
    }
    if (!window_) {
        create();
    }
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void KeptWindow::create() {
    window_ = make_();
    window_->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                            Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    window_->setAttribute(Qt::WA_DeleteOnClose, false);
    window_->setAttribute(Qt::WA_QuitOnClose, false);
    QRect place(QPoint(), window_->size());
    place.moveCenter(window_->screen()->availableGeometry().center());
    window_->move(place.topLeft());
}

} // namespace orv
