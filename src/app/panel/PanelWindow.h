#pragma once

#include "Panel.h"
#include "PanelState.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>

namespace orv {

/// The top-level window round the control panel: a popover beside the tray's item that closes when
/// the user turns to something else, or an ordinary window. The popover is always as high as its
/// content wants, as far as the screen allows.
class PanelWindow : public QWidget, public Panel {
    Q_OBJECT

  public:
    /// Takes over `content`. `closing` decides what closing the ordinary window does; the window
    /// itself hides or becomes small, and asks for the program's end by `endWanted`.
    ///
    /// A click on the tray's item first takes the focus away, which closes the popover, and then
    /// asks to toggle it: within `sameClick` the click counts as the one that closed it.
    PanelWindow(QWidget* content, std::function<CloseAction()> closing,
                std::chrono::milliseconds sameClick = std::chrono::milliseconds(250));

    bool isShown() const override;
    void showBeside(const QRect& button) override;
    void showAsWindow() override;
    void close() override;

  Q_SIGNALS:
    /// The ordinary window was closed, and the program is to end with it.
    void endWanted();

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    enum class Style { Popover, Window };

    void setStyle(Style style);
    void fitContent(const QSize& available);
    void placePopover();
    void closeIfLeft();

    /// `window` of this program has the focus now; null when none has.
    void focusMoved(const QWindow* window);

    std::function<CloseAction()> closing_;
    const std::chrono::milliseconds sameClick_;
    Style style_ = Style::Window;
    QRect button_;            ///< What the popover stands beside.
    QTimer lookIfLeft_{this}; ///< Runs from the loss of the activation to the look at who has it.
    /// Of this program's windows, another one than this had the focus last.
    bool anotherHadFocus_ = false;
    QElapsedTimer leftSince_; ///< When the popover closed by itself.
};

} // namespace orv
