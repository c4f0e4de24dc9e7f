#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orv {

/// What a desktop entry file tells of an application that has a window.
struct DesktopEntry {
    QString name;   ///< For people, untranslated.
    QString binary; ///< File name of the program, without its folder.

    friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;
};

/// Reads the contents of a ".desktop" file (freedesktop.org's Desktop Entry format, UTF-8). No
/// value when it is not an application, is hidden, or lacks a name or a program.
std::optional<DesktopEntry> parseDesktopEntry(const QByteArray& contents);

} // namespace orv
