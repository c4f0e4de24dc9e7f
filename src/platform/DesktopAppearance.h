#pragma once

#include <functional>
#include <memory>

namespace orv {

/// What programs shall look like, as the user has told the desktop.
enum class ColourScheme { NoPreference, Dark, Light };

/// The desktop's setting whether programs are light or dark. Lives on the main thread; nothing
/// blocks.
class DesktopAppearance {
  public:
    using Handler = std::function<void(ColourScheme)>;

    virtual ~DesktopAppearance() = default;

    /// Called later with the scheme, and again whenever it changes; not at all where the desktop
    /// has no such setting. One handler; an empty one ends it.
    virtual void setHandler(Handler handler) = 0;
};

/// This desktop's.
std::unique_ptr<DesktopAppearance> createDesktopAppearance();

} // namespace orv
