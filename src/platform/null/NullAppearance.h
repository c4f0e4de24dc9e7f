#pragma once

#include "DesktopAppearance.h"

namespace orv {

/// A desktop that has no wish.
class NullAppearance : public DesktopAppearance {
  public:
    void setHandler(std::function<void(ColourScheme)> /*handler*/) override {}
};

} // namespace orv
