#pragma once

#include <QSize>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace orv {

/// An ordinary window that is made when it is first asked for, and kept when it is closed. Its
/// title bar can close it but not make it small, and its size is fixed. Main thread only.
class KeptWindow {
  public:
    /// `make` makes the content, once (without it there is no window); `title` gives the title in
    /// the interface's language.
    KeptWindow(std::function<std::unique_ptr<QWidget>()> make, std::function<QString()> title,
               QSize size);

    /// Brings the window to the front, with the focus; the first time, in the middle of the screen.
    void show();

    /// The language of the interface has changed.
    void retitle();

  private:
    void create();

    const std::function<std::unique_ptr<QWidget>()> make_;
    const std::function<QString()> title_;
    const QSize size_; ///< Of the content.
    std::unique_ptr<QWidget> window_;
};

} // namespace orv
