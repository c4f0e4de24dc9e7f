#pragma once

#include "DesktopOpener.h"

namespace orv {

/// A desktop opener that goes by the desktop's own associations. What the desktop refuses is
/// logged.
class DesktopServices : public DesktopOpener {
  public:
    bool openAddress(const QString& url) override;
    bool revealFolder(const QString& path) override;
};

} // namespace orv
