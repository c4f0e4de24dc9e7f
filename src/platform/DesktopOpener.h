#pragma once

#include <QString>

namespace orv {

/// The desktop's way of opening things in other programs. Main thread only; returns at once, with
/// false when the desktop has nobody to ask. Whether what was asked has really been opened, nobody
/// tells.
class DesktopOpener {
  public:
    virtual ~DesktopOpener() = default;

    /// Opens a web address in the default browser. Only absolute addresses with a host and the
    /// scheme "http" or "https" are opened: the text may come from a network, and other schemes
    /// would start other programs.
    virtual bool openAddress(const QString& url) = 0;

    /// Shows a folder, given by its absolute path, in the file browser. The folder must exist.
    virtual bool revealFolder(const QString& path) = 0;
};

} // namespace orv
