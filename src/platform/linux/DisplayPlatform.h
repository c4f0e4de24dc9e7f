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

/// The choice in the environment, from before the application object, which looks there, until it
/// is made: programs that are started later are to make their own choice. Restores what was there.
/// One at a time, and no other thread may touch the environment meanwhile.
class DisplayPlatform {
  public:
    DisplayPlatform();
    ~DisplayPlatform();
    DisplayPlatform(const DisplayPlatform&) = delete;
    DisplayPlatform& operator=(const DisplayPlatform&) = delete;

  private:
    const SessionDisplays before_ = SessionDisplays::fromEnvironment();
    const bool wasSet_;
};

} // namespace orv
