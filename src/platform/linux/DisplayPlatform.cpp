#include "DisplayPlatform.h"

#include <QList>

namespace orv {

namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";

} // namespace

SessionDisplays SessionDisplays::fromEnvironment() {
    return {.chosenPlatform = qgetenv(platformVariable),
            .waylandDisplay = qgetenv("WAYLAND_DISPLAY"),
            .x11Display = qgetenv("DISPLAY")};
}

std::optional<QByteArray> platformForSubtitles(const SessionDisplays& displays) {
    if (displays.waylandDisplay.isEmpty() || displays.x11Display.isEmpty()) {
        return std::nullopt;
    }
    const QByteArray& chosen = displays.chosenPlatform;
    if (!chosen.isEmpty() && !chosen.split(';').contains("xcb")) {
        return std::nullopt;
    }
    // Should the X server not answer, Qt's next choice is better than no program.
    return QByteArray("xcb;wayland");
}

DisplayPlatform::DisplayPlatform()
    : wasSet_(qEnvironmentVariableIsSet(platformVariable)) {
    if (const auto platform = platformForSubtitles(before_)) {
        qputenv(platformVariable, *platform);
    }
}

DisplayPlatform::~DisplayPlatform() {
    if (wasSet_) {
        qputenv(platformVariable, before_.chosenPlatform);
    } else {
        qunsetenv(platformVariable);
    }
}

} // namespace orv
