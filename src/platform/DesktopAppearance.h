#pragma once

#include <functional>
#include <memory>

namespace orv {

/// What the desktop wants programs to look like.
enum class ColourScheme { NoPreference, Dark, Light };

/// Tells the person's wish for light or dark programs. Lives on the main thread; nothing blocks.
class DesktopAppearance {
  public:
    virtual ~DesktopAppearance() = default;

    /// Called later with the scheme, and again whenever it changes; not at all where the desktop
    /// has no such wish to tell. One handler; an empty one ends it.
    virtual void setHandler(std::function<void(ColourScheme)> handler) = 0;
};

/// This desktop's.
std::unique_ptr<DesktopAppearance> createDesktopAppearance();

} // namespace orv
