#pragma once

#include <QWidget>

#include <functional>
#include <memory>

namespace orv {

/// An ordinary window that is made when it is first asked for, and kept when it is closed. Its
/// title bar can close it but not make it small. Main thread only.
class KeptWindow {
  public:
    /// `make` makes the window, once, in its size and with its title; without it there is none.
    explicit KeptWindow(std::function<std::unique_ptr<QWidget>()> make);

    /// Brings the window to the front, with the focus; the first time, in the middle of the screen.
    void show();

  private:
    void create();

    const std::function<std::unique_ptr<QWidget>()> make_;
    std::unique_ptr<QWidget> window_;
};

} // namespace orv
