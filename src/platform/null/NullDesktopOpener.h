#pragma once

#include "DesktopOpener.h"

namespace orv {

/// A desktop on which nothing can be opened.
class NullDesktopOpener : public DesktopOpener {
  public:
    bool openAddress(const QString& /*url*/) override { return false; }

    bool revealFolder(const QString& /*path*/) override { return false; }
};

} // namespace orv
