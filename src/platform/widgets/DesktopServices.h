#pragma once

#include "DesktopOpener.h"

namespace orv {

/// A desktop opener that goes by the desktop's own associations. What the desktop refuses is
/// logged.
class DesktopServices : public DesktopOpener {
  public:
    void openAddress(const QString& url) override;
    void revealFolder(const QString& path) override;
};

} // namespace orv
