#pragma once

#include "Panel.h"

#include <functional>
#include <memory>
#include <utility>

namespace orv {

/// A panel that is made when it is first shown: the icon is in the tray sooner, and a program whose
/// panel nobody opens does not hold one. `Window` is the panel's own class.
template <typename Window>
class LazyPanel : public Panel {
  public:
    explicit LazyPanel(std::function<std::unique_ptr<Window>()> make)
        : make_(std::move(make)) {}

    /// The window, made now if need be.
    Window& get() {
        if (!window_) {
            window_ = make_();
        }
        return *window_;
    }

    /// The window if there is one.
    Window* made() const { return window_.get(); }

    bool isShown() const override { return window_ && window_->isShown(); }

    void showBeside(const QRect& button) override { get().showBeside(button); }

    void showAsWindow() override { get().showAsWindow(); }

    void close() override {
        if (window_) {
            window_->close();
        }
    }

  private:
    const std::function<std::unique_ptr<Window>()> make_;
    std::unique_ptr<Window> window_;
};

} // namespace orv
