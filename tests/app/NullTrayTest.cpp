#include "NullTray.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(NullTray, isNeverThereAndNeverCallsAnyone) {
    NullTray tray;
    int calls = 0;
    tray.setAvailabilityHandler([&](bool) { ++calls; });
    tray.setClickHandler([&](TrayClick) { ++calls; });
    tray.setIcon(TrayIcon::Translating, u"Translating"_s);
    tray.showMenu({{.text = u"Quit"_s, .action = [&] { ++calls; }}});
    EXPECT_FALSE(tray.isAvailable());
    EXPECT_TRUE(tray.geometry().isEmpty());
    EXPECT_EQ(calls, 0);
}

} // namespace

} // namespace orv::test
