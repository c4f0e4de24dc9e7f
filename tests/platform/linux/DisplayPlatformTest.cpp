#include "DisplayPlatform.h"

#include <gtest/gtest.h>

namespace orv::test {

namespace {

TEST(DisplayPlatform, leavesAnX11SessionAlone) {
    EXPECT_EQ(
        platformForSubtitles({.chosenPlatform = {}, .waylandDisplay = {}, .x11Display = ":0"}),
        std::nullopt);
}

TEST(DisplayPlatform, takesTheXServerOfAWaylandSession) {
    EXPECT_EQ(platformForSubtitles(
                  {.chosenPlatform = {}, .waylandDisplay = "wayland-0", .x11Display = ":0"}),
              QByteArray("xcb;wayland"));
}

TEST(DisplayPlatform, leavesAWaylandSessionWithoutXServerAlone) {
    EXPECT_EQ(platformForSubtitles(
                  {.chosenPlatform = {}, .waylandDisplay = "wayland-0", .x11Display = {}}),
              std::nullopt);
}

TEST(DisplayPlatform, keepsWhatTheUserHasChosen) {
    for (const char* chosen : {"wayland", "offscreen", "wayland-egl"}) {
        EXPECT_EQ(
            platformForSubtitles(
                {.chosenPlatform = chosen, .waylandDisplay = "wayland-0", .x11Display = ":0"}),
            std::nullopt)
            << chosen;
    }
}

TEST(DisplayPlatform, prefersTheXServerInAListThatAllowsIt) {
    EXPECT_EQ(
        platformForSubtitles(
            {.chosenPlatform = "wayland;xcb", .waylandDisplay = "wayland-0", .x11Display = ":0"}),
        QByteArray("xcb;wayland"));
}

TEST(DisplayPlatform, standsInTheEnvironmentAsLongAsItIsNeeded) {
    qunsetenv("QT_QPA_PLATFORM");
    qputenv("WAYLAND_DISPLAY", "wayland-7");
    qputenv("DISPLAY", ":7");
    {
        const DisplayPlatform choice;
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb;wayland"));
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) << "for those we start";
    qputenv("QT_QPA_PLATFORM", "wayland;xcb");
    {
        const DisplayPlatform choice;
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb;wayland"));
    }
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("wayland;xcb"));
    qputenv("WAYLAND_DISPLAY", QByteArray());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    {
        const DisplayPlatform choice;
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
    }
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
}

} // namespace

} // namespace orv::test
