#include "MessageDialogs.h"

#include "WaitUntil.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const Alert question = {.style = AlertStyle::Warning,
                        .title = u"Clear Cache?"_s,
                        .message = u"This removes logs."_s,
                        .buttons = {u"Delete"_s, u"Cancel"_s}};

/// The alert on screen, or null.
QMessageBox* alertOnScreen() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        if (box != nullptr && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

QAbstractButton* buttonCalled(const QMessageBox& box, const QString& text) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

class MessageDialogsTest : public ::testing::Test {
  protected:
    void ask() {
        dialogs->showAlert(question, [this](int button) { chosen = button; });
        box = alertOnScreen();
    }

    std::unique_ptr<MessageDialogs> dialogs = std::make_unique<MessageDialogs>();
    QMessageBox* box = nullptr;
    int chosen = -1;
};

TEST_F(MessageDialogsTest, showTheTextsAndReturnAtOnce) {
    ask();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(chosen, -1);
    EXPECT_EQ(box->text(), u"Clear Cache?"_s);
    EXPECT_EQ(box->informativeText(), u"This removes logs."_s);
    EXPECT_EQ(box->icon(), QMessageBox::Warning);
    EXPECT_TRUE(box->isModal());
    EXPECT_EQ(box->defaultButton()->text(), u"Delete"_s);
}

TEST_F(MessageDialogsTest, tellWhichButtonWasPressed) {
    ask();
    buttonCalled(*box, u"Delete"_s)->click();
    EXPECT_EQ(chosen, 0);
    EXPECT_EQ(alertOnScreen(), nullptr);
    ask();
    buttonCalled(*box, u"Cancel"_s)->click();
    EXPECT_EQ(chosen, 1);
}

TEST_F(MessageDialogsTest, closingChoosesTheLastButton) {
    ask();
    box->close();
    EXPECT_TRUE(waitUntil([this] { return chosen == 1; }));
}

TEST_F(MessageDialogsTest, severalAlertsWaitTogether) {
    ask();
    QMessageBox* first = box;
    dialogs->showAlert({.title = u"Second"_s, .message = {}, .buttons = {u"OK"_s}});
    EXPECT_TRUE(first->isVisible());
    first->close();
    EXPECT_TRUE(waitUntil([] { return alertOnScreen() != nullptr; }));
    EXPECT_EQ(alertOnScreen()->text(), u"Second"_s);
}

TEST_F(MessageDialogsTest, showPlainTextsWhateverStandsInThem) {
    dialogs->showAlert({.title = u"<h1>Big</h1>"_s,
                        .message = u"<img src='file:///etc/hostname'><b>Bold</b>"_s,
                        .buttons = {u"OK"_s}});
    box = alertOnScreen();
    ASSERT_NE(box, nullptr);
    int labels = 0;
    for (const QLabel* label : box->findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) {
            ++labels;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
        }
    }
    EXPECT_EQ(labels, 2);
}

TEST_F(MessageDialogsTest, showAnArrowForUpdates) {
    dialogs->showAlert(
        {.title = u"Update"_s, .message = {}, .buttons = {u"OK"_s}, .icon = AlertIcon::Update});
    box = alertOnScreen();
    ASSERT_NE(box, nullptr);
    const QImage picture = box->iconPixmap().toImage();
    ASSERT_EQ(picture.size(), QSize(48, 48));
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(picture.pixelColor(6, 24), QColor(0x25, 0x63, 0xeb)) << "the circle";
    EXPECT_EQ(picture.pixelColor(24, 24), QColor(Qt::white)) << "the arrow";
}

TEST_F(MessageDialogsTest, anAnswerIsNotGivenAfterTheEnd) {
    ask();
    dialogs.reset();
    drainEvents();
    EXPECT_EQ(alertOnScreen(), nullptr);
    EXPECT_EQ(chosen, -1);
}

} // namespace

} // namespace orv::test
