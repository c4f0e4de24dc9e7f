#include "CopyButton.h"

#include "WaitUntil.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

QString nameOf(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
}

/// Long enough never to run out during a test.
constexpr auto forEver = 1h;

TEST(CopyButton, copiesAndSaysSoForAWhile) {
    CopyButton button([] { return u"http://localhost:8077/overlay"_s; }, nullptr, 1ms);
    button.setTexts(u"Copy URL"_s, u"Copied"_s);
    EXPECT_EQ(button.text(), u"Copy URL"_s);
    button.click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"http://localhost:8077/overlay"_s);
    EXPECT_EQ(button.text(), u"Copied"_s);
    EXPECT_TRUE(waitUntil([&] { return button.text() == u"Copy URL"_s; }));
}

TEST(CopyButton, assistiveProgramsHearOfIt) {
    CopyButton button([] { return u"x"_s; }, nullptr, forEver);
    button.setTexts(u"Copy URL"_s, u"Copied"_s);
    EXPECT_EQ(nameOf(button), u"Copy URL"_s);
    button.click();
    EXPECT_EQ(nameOf(button), u"Copied"_s);
}

TEST(CopyButton, theThanksFollowTheLanguage) {
    CopyButton button([] { return u"x"_s; }, nullptr, forEver);
    button.setTexts(u"Copy URL"_s, u"Copied"_s);
    button.click();
    button.setTexts(u"URL kopieren"_s, u"Kopiert"_s);
    EXPECT_EQ(button.text(), u"Kopiert"_s);
}

TEST(CopyButton, keepsItsWidth) {
    CopyButton button([] { return u"x"_s; }, nullptr, forEver);
    button.setTexts(u"Copy"_s, u"It has been copied"_s);
    const int before = button.sizeHint().width();
    EXPECT_GT(before, button.fontMetrics().horizontalAdvance(u"It has been copied"_s));
    button.click();
    EXPECT_EQ(button.sizeHint().width(), before);
}

} // namespace

} // namespace orv::test
