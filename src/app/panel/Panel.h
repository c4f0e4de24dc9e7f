#pragma once

#include <QRect>

namespace orv {

/// The interface through which the application delegate shows and hides the window of the control
/// panel.
class Panel {
  public:
    virtual ~Panel() = default;

    virtual bool isShown() const = 0;

    /// Shows the panel as a popover beside `button` (screen coordinates; may be empty). It closes
    /// when the user turns to something else.
    virtual void showBeside(const QRect& button) = 0;

    /// Shows the panel as an ordinary window, for desktops without a tray. It stays one until
    /// `showBeside` is called.
    virtual void showAsWindow() = 0;

    virtual void close() = 0;
};

} // namespace orv
