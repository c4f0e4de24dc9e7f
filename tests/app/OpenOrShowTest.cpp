#include "OpenOrShow.h"

#include "Fakes.h"

#include <QClipboard>
#include <QGuiApplication>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// A desktop without a browser and without a file manager.
class BareDesktop : public DesktopOpener {
  public:
    bool openAddress(const QString& /*url*/) override { return false; }

    bool revealFolder(const QString& /*path*/) override { return false; }
};

TEST(OpenOrShow, showsNothingThatAProgramHasOpened) {
    FakeOpener desktop;
    FakeDialogs dialogs;
    OpenOrShow opener(desktop, dialogs, keyAsText);
    EXPECT_TRUE(opener.openAddress(u"https://example.org/new"_s));
    EXPECT_TRUE(opener.revealFolder(u"/home/me"_s));
    EXPECT_EQ(desktop.addresses, QStringList{u"https://example.org/new"_s});
    EXPECT_EQ(desktop.folders, QStringList{u"/home/me"_s});
    EXPECT_TRUE(dialogs.alerts.isEmpty());
}

TEST(OpenOrShow, givesWhatNothingOpensToBeCopied) {
    BareDesktop desktop;
    FakeDialogs dialogs;
    OpenOrShow opener(desktop, dialogs, keyAsText);
    EXPECT_FALSE(opener.openAddress(u"https://example.org/new"_s));
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.open.title>"_s);
    EXPECT_EQ(dialogs.alerts[0].message, u"https://example.org/new"_s);
    EXPECT_EQ(dialogs.alerts[0].buttons, (QStringList{u"<alert.open.copy>"_s, u"<alert.ok>"_s}));
    dialogs.answers[0](0);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"https://example.org/new"_s);
}

TEST(OpenOrShow, copiesNothingUnasked) {
    BareDesktop desktop;
    FakeDialogs dialogs;
    OpenOrShow opener(desktop, dialogs, keyAsText);
    QGuiApplication::clipboard()->setText(u"what was there"_s);
    EXPECT_FALSE(opener.revealFolder(u"/home/me"_s));
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].message, u"/home/me"_s);
    dialogs.answers[0](1);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"what was there"_s);
}

} // namespace

} // namespace orv::test
