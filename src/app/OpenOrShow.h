#pragma once

#include "DesktopOpener.h"
#include "TextLookup.h"

namespace orv {

class Dialogs;

/// An opener that shows an alert with what the desktop opens in no program, so that the user can
/// copy it. Main thread only.
class OpenOrShow : public DesktopOpener {
  public:
    /// The references outlive it.
    OpenOrShow(DesktopOpener& desktop, Dialogs& dialogs, TextLookup text);

    bool openAddress(const QString& url) override;
    bool revealFolder(const QString& path) override;

  private:
    void show(const QString& what);

    DesktopOpener& desktop_;
    Dialogs& dialogs_;
    const TextLookup text_;
};

} // namespace orv
