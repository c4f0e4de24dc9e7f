#include "LazyPanel.h"

#include "Fakes.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class LazyPanelTest : public ::testing::Test {
  protected:
    int made = 0;
    LazyPanel<FakePanel> panel{[this] {
        ++made;
        return std::make_unique<FakePanel>();
    }};
};

TEST_F(LazyPanelTest, isNotMadeByAskingOrClosing) {
    EXPECT_FALSE(panel.isShown());
    panel.close();
    EXPECT_EQ(panel.made(), nullptr);
    EXPECT_EQ(made, 0);
}

TEST_F(LazyPanelTest, isMadeOnceByShowing) {
    panel.showBeside({1, 2, 3, 4});
    EXPECT_TRUE(panel.isShown());
    panel.close();
    EXPECT_FALSE(panel.isShown());
    panel.showAsWindow();
    EXPECT_EQ(made, 1);
    EXPECT_EQ(panel.get().calls, (QStringList{u"showBeside 1,2"_s, u"close"_s, u"showAsWindow"_s}));
}

} // namespace

} // namespace orv::test
