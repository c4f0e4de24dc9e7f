#pragma once

#include "DesktopOpener.h"

namespace orv {

/// A desktop on which nothing can be opened.
class NullDesktopOpener : public DesktopOpener {
  public:
    void openAddress(const QString& /*url*/) override {}

    void revealFolder(const QString& /*path*/) override {}
};

} // namespace orv
