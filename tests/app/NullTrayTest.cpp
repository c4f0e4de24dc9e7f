#include "NullTray.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

struct CallCount : Tray::Listener {
    void trayClicked(TrayClick /*click*/) override { ++calls; }

    void trayAvailabilityChanged(bool /*available*/) override { ++calls; }

    int calls = 0;
};

TEST(NullTray, isNeverThereAndNeverCallsAnyone) {
    NullTray tray;
    CallCount count;
    tray.setListener(&count);
    tray.setIcon(TrayIcon::Translating, u"Translating"_s);
    tray.showMenu({{.text = u"Quit"_s, .action = [&] { ++count.calls; }}});
    EXPECT_FALSE(tray.isAvailable());
    EXPECT_TRUE(tray.geometry().isEmpty());
    EXPECT_EQ(count.calls, 0);
}

} // namespace

} // namespace orv::test
