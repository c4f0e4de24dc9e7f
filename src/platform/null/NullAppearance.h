#pragma once

#include "DesktopAppearance.h"

namespace orv {

/// The appearance of a desktop that has no such setting.
class NullAppearance : public DesktopAppearance {
  public:
    void setHandler(Handler /*handler*/) override {}
};

} // namespace orv
