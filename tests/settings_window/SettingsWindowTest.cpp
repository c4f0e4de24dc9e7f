// The settings window as a whole: tabs, language, names, keys.

#include "MissingChildren.h"
#include "SettingsWindowFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollArea>
#include <QSet>
#include <QSpinBox>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

using SettingsWindowTest = SettingsWindowFixture;

TEST_F(SettingsWindowTest, hasSixTabsInTheirOrder) {
    EXPECT_EQ(tabTexts(), (QStringList{u"General"_s, u"Engines"_s, u"Whisper"_s, u"Languages"_s,
                                       u"Storage"_s, u"Info"_s}));
    EXPECT_EQ(tabs()->currentIndex(), 0);
}

TEST_F(SettingsWindowTest, isFiveHundredByFourHundredAndTwentyAndCanBeClosedAndShownAgain) {
    window->resize(600, 600);
    EXPECT_EQ(window->size(), QSize(500, 420)) << "whoever pulls at it";
    EXPECT_EQ(window->windowTitle(), u"ORV Settings"_s);
    EXPECT_FALSE(window->testAttribute(Qt::WA_DeleteOnClose));
    showTab(3);
    window->close();
    EXPECT_FALSE(window->isVisible());
    window->show();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(tabs()->currentIndex(), 3);
}

TEST_F(SettingsWindowTest, escapeAndTheCloseKeyCloseIt) {
    pressKey(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    window->show();
    pressKey(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(SettingsWindowTest, keysGoFromTabToTab) {
    pressKey(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs()->currentIndex(), 1);
    pressKey(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    pressKey(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(tabs()->currentIndex(), 5);
}

TEST_F(SettingsWindowTest, anotherLanguageChangesTitleTabsAndContentAtOnce) {
    for (const UILanguage language : UILanguage::allCases()) {
        l10n.setCurrent(language);
        EXPECT_EQ(window->windowTitle(), text(u"settings.title"_s));
        EXPECT_EQ(tabs()->tabText(4), text(u"settings.tab.storage"_s));
        EXPECT_NE(control<QCheckBox>(text(u"settings.vrc.enable"_s)), nullptr);
        EXPECT_NE(control<QAbstractButton>(text(u"settings.engine.whisper.name"_s)), nullptr);
        EXPECT_NE(control<QSpinBox>(text(u"settings.vrc.section"_s) + u": "_s +
                                    text(u"settings.vrc.port"_s)),
                  nullptr);
    }
}

TEST_F(SettingsWindowTest, noEnglishTextStaysInAnotherLanguage) {
    // Words that are the same in both languages, and names.
    QSet<QString> english;
    for (const QString& key : L10n::strings().at(UILanguage::English).keys()) {
        const QString german = L10n::strings().at(UILanguage::German).text(key).value_or(u""_s);
        const QString own = L10n::strings().at(UILanguage::English).text(key).value_or(u""_s);
        if (own != german) {
            english.insert(own);
        }
    }
    for (const QString& key : L10n::strings().at(UILanguage::German).keys()) {
        english.remove(L10n::strings().at(UILanguage::German).text(key).value_or(u""_s));
    }
    l10n.setCurrent(UILanguage::German);
    lookAtEveryTab();
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        EXPECT_FALSE(english.contains(widget->accessibleName()))
            << qPrintable(widget->accessibleName());
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            EXPECT_FALSE(english.contains(label->text())) << qPrintable(label->text());
        } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            EXPECT_FALSE(english.contains(button->text())) << qPrintable(button->text());
        }
    }
}

TEST_F(SettingsWindowTest, everyControlHasANameOfItsOwn) {
    QSet<QString> names;
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        const bool isInner = widget->objectName().startsWith(u"qt_"_s) ||
                             qobject_cast<const QScrollArea*>(widget) != nullptr ||
                             widget->window() != window.get();
        if (widget->focusPolicy() == Qt::NoFocus || widget->focusProxy() != nullptr || isInner ||
            qobject_cast<const QTabBar*>(widget) != nullptr ||
            qobject_cast<const QLabel*>(widget) != nullptr) {
            continue;
        }
        QString name = widget->accessibleName();
        if (name.isEmpty() && button != nullptr) {
            name = button->text();
        }
        if (qobject_cast<const QComboBox*>(widget->parentWidget()) != nullptr) {
            continue; // The field within a choice has the choice's name.
        }
        EXPECT_FALSE(name.isEmpty()) << widget->metaObject()->className();
        EXPECT_FALSE(names.contains(name)) << qPrintable(name);
        names.insert(name);
    }
    EXPECT_GT(names.size(), 60);
}

TEST_F(SettingsWindowTest, noQuestionOfAnAssistiveProgramIsTooMuch) {
    for (int tab = 0; tab < tabs()->count(); ++tab) {
        showTab(tab);
        EXPECT_GT(askForMissingChildren(QAccessible::queryAccessibleInterface(window.get())), 10);
    }
}

TEST_F(SettingsWindowTest, everyControlIsReachedByTheTabKey) {
    window->activateWindow();
    ASSERT_TRUE(waitUntil([this] { return window->isActiveWindow(); }));
    settings.sttEngine.set(u"google_grpc"_s);
    settings.googleServiceAccountPath.set(u"/a.json"_s);
    for (int tab = 0; tab < tabs()->count(); ++tab) {
        showTab(tab);
        QSet<const QWidget*> reached;
        tabs()->setFocus(Qt::TabFocusReason);
        for (const QWidget* at = nullptr; !reached.contains(at = QApplication::focusWidget());) {
            reached.insert(at);
            QKeyEvent next(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
            QCoreApplication::sendEvent(QApplication::focusWidget(), &next);
        }
        for (const QWidget* widget : window->findChildren<QWidget*>()) {
            const bool isControl = widget->isVisible() && widget->isEnabled() &&
                                   (widget->focusPolicy() & Qt::TabFocus) != 0 &&
                                   widget->focusProxy() == nullptr;
            if (isControl) {
                EXPECT_TRUE(reached.contains(widget))
                    << tab << " " << widget->metaObject()->className() << " "
                    << qPrintable(widget->accessibleName());
            }
        }
    }
}

} // namespace

} // namespace orv::test
