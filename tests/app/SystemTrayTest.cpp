#include "SystemTray.h"

#include "TemplateIcon.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(SystemTray, hasASymbolForEachState) {
    EXPECT_EQ(traySymbol(TrayIcon::Idle), u":/orvane/tray/idle.svg"_s);
    EXPECT_EQ(traySymbol(TrayIcon::BackendRunning), u":/orvane/tray/running.svg"_s);
    EXPECT_EQ(traySymbol(TrayIcon::Translating), u":/orvane/tray/translating.svg"_s);
    EXPECT_EQ(traySymbol(TrayIcon::Interrupted), u":/orvane/tray/interrupted.svg"_s);
}

TEST(SystemTray, hasSymbolsThatCanBeToldApart) {
    const SystemTray registersThem;
    const auto drawn = [](TrayIcon icon) {
        return templateIcon(traySymbol(icon), Qt::black).pixmap(22).toImage();
    };
    EXPECT_FALSE(drawn(TrayIcon::Idle).isNull());
    EXPECT_NE(drawn(TrayIcon::Idle), drawn(TrayIcon::BackendRunning));
    EXPECT_NE(drawn(TrayIcon::Idle), drawn(TrayIcon::Translating));
    EXPECT_NE(drawn(TrayIcon::BackendRunning), drawn(TrayIcon::Translating));
    EXPECT_NE(drawn(TrayIcon::Interrupted), drawn(TrayIcon::Translating));
    EXPECT_NE(drawn(TrayIcon::Interrupted), drawn(TrayIcon::BackendRunning));
    EXPECT_NE(drawn(TrayIcon::Interrupted), drawn(TrayIcon::Idle));
}

} // namespace

} // namespace orv::test
