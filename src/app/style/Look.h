#pragma once

#include "DesktopAppearance.h"

namespace orv {

class OrvaneStyle;

/// The look of the application: gives it its style, keeps that as light or dark as the desktop, and
/// mends what Qt tells assistive programs. Made once, after the application object and before any
/// widget.
class Look {
  public:
    /// `appearance` outlives it.
    explicit Look(DesktopAppearance& appearance);
    ~Look();

    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;

  private:
    DesktopAppearance& appearance_;
    OrvaneStyle* style_; ///< Belongs to the application.
};

} // namespace orv
