#include "KeptWindow.h"

#include <QScreen>

#include <utility>

namespace orv {

KeptWindow::KeptWindow(std::function<std::unique_ptr<QWidget>()> make,
                       std::function<QString()> title, QSize size)
    : make_(std::move(make))
    , title_(std::move(title))
    , size_(size) {}

void KeptWindow::show() {
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
    window_->setFixedSize(size_);
    QRect place(QPoint(), window_->size());
    place.moveCenter(window_->screen()->availableGeometry().center());
    window_->move(place.topLeft());
    retitle();
}

void KeptWindow::retitle() {
    if (window_) {
        window_->setWindowTitle(title_());
    }
}

} // namespace orv
