#pragma once

#include <QByteArray>

#include <optional>

namespace orv {

/// What a session's environment says about its displays.
struct SessionDisplays {
    QByteArray chosenPlatform; ///< `QT_QPA_PLATFORM`: names in order of preference, by ";".
    QByteArray waylandDisplay; ///< `WAYLAND_DISPLAY`.
    QByteArray x11Display;     ///< `DISPLAY`; in a Wayland session that of its X server.

    static SessionDisplays fromEnvironment();
};

/// The value for `QT_QPA_PLATFORM` with which the program can place its subtitles, or nothing when
/// Qt's own choice is right. A plain Wayland client may neither place itself nor stay on top, so a
/// Wayland session's X server is taken where there is one. A choice of the user's that leaves no
/// room for it stands.
std::optional<QByteArray> platformForSubtitles(const SessionDisplays& displays);

/// Puts the choice into the environment. To be called before there is an application object.
void chooseDisplayPlatform();

} // namespace orv
