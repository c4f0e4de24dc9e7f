#include "PanelWindow.h"

#include "ScreenPlacement.h"
#include "ThreadChecks.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <utility>

namespace orv {

namespace {

/// Between the tray's item and the popover, in pixels.
constexpr int popoverGap = 4;

/// From the loss of the activation to the look at who has it: it goes from one window to another
/// through a moment without any.
constexpr std::chrono::milliseconds handOver{80};

/// The same when a list or an alert of the panel has closed, which gives the activation back: on a
/// busy machine the window manager takes its time.
constexpr std::chrono::milliseconds handBack{1000};

} // namespace

PanelWindow::PanelWindow(QWidget* content, std::function<CloseAction()> closing,
                         std::chrono::milliseconds sameClick)
    : closing_(std::move(closing))
    , sameClick_(sameClick) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(content);
    setAttribute(Qt::WA_QuitOnClose, false);
    lookIfLeft_.setSingleShot(true);
    connect(&lookIfLeft_, &QTimer::timeout, this, &PanelWindow::closeIfLeft);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &PanelWindow::focusMoved);
}

bool PanelWindow::isShown() const {
    return isVisible() && !isMinimized();
}

void PanelWindow::showBeside(const QRect& button) {
    ORV_ON_MAIN();
    if (leftSince_.isValid() && !leftSince_.hasExpired(sameClick_.count())) {
        leftSince_.invalidate();
        return;
    }
    setStyle(Style::Popover);
    button_ = button;
    placePopover();
    show();
    raise();
    activateWindow();
}

void PanelWindow::placePopover() {
    const QScreen* screen = QGuiApplication::screenAt(button_.center());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    const QRect available = screen->availableGeometry();
    fitContent(available.size());
    move(placeBeside(button_, size(), available, popoverGap));
}

bool PanelWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest && style_ == Style::Popover && isVisible()) {
        placePopover();
    }
    return handled;
}

void PanelWindow::showAsWindow() {
    ORV_ON_MAIN();
    if (!isVisible()) {
        fitContent(screen()->availableGeometry().size());
    }
    setStyle(Style::Window);
    showNormal();
    raise();
    activateWindow();
}

void PanelWindow::close() {
    ORV_ON_MAIN();
    hide();
    leftSince_.invalidate();
}

void PanelWindow::fitContent(const QSize& available) {
    // Not adjustSize(), which stops at two thirds of the screen.
    ensurePolished();
    const int width = sizeHint().width();
    const int height =
        hasHeightForWidth() ? layout()->totalHeightForWidth(width) : sizeHint().height();
    resize(QSize(width, height).boundedTo(available - QSize(0, 2 * popoverGap)));
}

void PanelWindow::setStyle(Style style) {
    const Qt::WindowFlags flags =
        style == Style::Popover ? Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                                : Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                      Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    style_ = style;
    if (windowFlags() != flags) {
        setWindowFlags(flags);
    }
}

void PanelWindow::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (style_ == Style::Popover) {
        // Nothing else sets a frameless window off from what is behind it.
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::Dark));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void PanelWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow() && isVisible()) {
        lookIfLeft_.start(anotherHadFocus_ ? handBack : handOver);
    }
}

void PanelWindow::focusMoved(const QWindow* window) {
    if (window == nullptr) {
        return;
    }
    anotherHadFocus_ = window != windowHandle();
    if (lookIfLeft_.isActive()) {
        lookIfLeft_.start(handOver);
    }
}

void PanelWindow::hideEvent(QHideEvent* event) {
    // Shown again at once, it has no activation yet; the look of before must not close it for that.
    lookIfLeft_.stop();
    QWidget::hideEvent(event);
}

void PanelWindow::closeIfLeft() {
    // The lists of combo boxes, and alerts, take the activation as well but belong to the panel.
    if (style_ != Style::Popover || !isVisible() || isActiveWindow() ||
        QApplication::activePopupWidget() != nullptr ||
        QApplication::activeModalWidget() != nullptr) {
        return;
    }
    close();
    leftSince_.start();
}

void PanelWindow::closeEvent(QCloseEvent* event) {
    if (style_ == Style::Popover) {
        event->accept();
        return;
    }
    switch (closing_()) {
    case CloseAction::Hide:
        event->accept();
        break;
    case CloseAction::Minimise:
        event->ignore();
        showMinimized();
        break;
    case CloseAction::EndProgram:
        event->accept();
        Q_EMIT endWanted();
        break;
    }
}

void PanelWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && style_ == Style::Popover) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace orv
