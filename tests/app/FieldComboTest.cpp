#include "FieldCombo.h"

#include "WaitUntil.h"

#include <QAccessible>
#include <QApplication>
#include <QCompleter>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QList<FieldEntry> languages = {{.id = u"auto"_s, .text = u"🔍 Auto-Detect"_s},
                                     {.id = u"de"_s, .text = u"🇩🇪 Deutsch"_s},
                                     {.id = u"es"_s, .text = u"🇪🇸 Español"_s},
                                     {.id = u"fi"_s, .text = u"🇫🇮 Suomi"_s}};

void typeAndLeave(FieldCombo& combo, const QString& text) {
    combo.lineEdit()->setText(text);
    Q_EMIT combo.lineEdit()->editingFinished();
}

QAccessibleInterface* accessible(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget);
}

class FieldComboTest : public ::testing::Test {
  protected:
    FieldComboTest() {
        combo.setEntries(languages, u"de"_s);
        QObject::connect(&combo, &FieldCombo::chosen, &combo,
                         [this](const QString& id) { chosen.append(id); });
    }

    FieldCombo combo{FieldCombo::Search::ByTyping};
    QStringList chosen;
};

TEST_F(FieldComboTest, showsWhatIsChosenAndTellsNobody) {
    EXPECT_EQ(combo.chosenId(), u"de"_s);
    EXPECT_EQ(combo.currentText(), u"🇩🇪 Deutsch"_s);
    combo.setChosen(u"es"_s);
    EXPECT_EQ(combo.chosenId(), u"es"_s);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FieldComboTest, newEntriesKeepTheChoiceThatIsHandedIn) {
    combo.setEntries(languages.mid(1), u"fi"_s);
    EXPECT_EQ(combo.count(), 3);
    EXPECT_EQ(combo.chosenId(), u"fi"_s);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FieldComboTest, aPartOfTheNameFindsTheEntry) {
    typeAndLeave(combo, u"espa"_s);
    EXPECT_EQ(combo.chosenId(), u"es"_s);
    EXPECT_EQ(combo.lineEdit()->text(), u"🇪🇸 Español"_s);
    EXPECT_EQ(chosen, QStringList{u"es"_s});
}

TEST_F(FieldComboTest, whatFitsNoEntryGoesBackToTheChoice) {
    for (const QString& typed : {u"Klingon"_s, u""_s, u"  "_s}) {
        typeAndLeave(combo, typed);
        EXPECT_EQ(combo.lineEdit()->text(), u"🇩🇪 Deutsch"_s);
    }
    EXPECT_EQ(combo.chosenId(), u"de"_s);
    EXPECT_EQ(combo.count(), languages.size());
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FieldComboTest, leavingAfterALetterOrWithSeveralFoundChangesNothing) {
    for (const QString& typed : {u"s"_s, u"E"_s, u"u"_s}) {
        typeAndLeave(combo, typed);
        EXPECT_EQ(combo.chosenId(), u"de"_s) << typed.toStdString();
        EXPECT_EQ(combo.currentText(), u"🇩🇪 Deutsch"_s);
    }
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FieldComboTest, returnTakesTheFirstThatIsFound) {
    combo.lineEdit()->setText(u"s"_s);
    Q_EMIT combo.lineEdit()->returnPressed();
    Q_EMIT combo.lineEdit()->editingFinished();
    EXPECT_EQ(chosen, QStringList{u"de"_s}) << "\"Deutsch\" is the first with an s";
    combo.lineEdit()->setText(u"suo"_s);
    Q_EMIT combo.lineEdit()->returnPressed();
    Q_EMIT combo.lineEdit()->editingFinished();
    EXPECT_EQ(chosen, (QStringList{u"de"_s, u"fi"_s}));
}

TEST_F(FieldComboTest, leavingWithoutTypingChangesNothing) {
    Q_EMIT combo.lineEdit()->editingFinished();
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FieldComboTest, theWheelScrollsPast) {
    combo.show();
    QWheelEvent wheel(QPointF(5, 5), combo.mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&combo, &wheel);
    EXPECT_FALSE(wheel.isAccepted());
    EXPECT_EQ(combo.chosenId(), u"de"_s);
}

TEST_F(FieldComboTest, isKnownByItsNameAndHasItsChoiceAsValue) {
    combo.setAccessibleName(u"From"_s);
    QAccessibleInterface* interface = accessible(combo);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::ComboBox);
    EXPECT_EQ(interface->text(QAccessible::Name), u"From"_s);
    EXPECT_EQ(interface->text(QAccessible::Value), u"🇩🇪 Deutsch"_s);
}

TEST_F(FieldComboTest, isKnownByTheLabelThatStandsForIt) {
    QWidget form;
    auto* label = new QLabel(u"To"_s, &form);
    auto* field = new FieldCombo(FieldCombo::Search::None, &form);
    label->setBuddy(field);
    EXPECT_EQ(accessible(*field)->text(QAccessible::Name), u"To"_s);
}

TEST_F(FieldComboTest, itsListAndItsTextAreFoundBelowIt) {
    QAccessibleInterface* interface = accessible(combo);
    ASSERT_EQ(interface->childCount(), 2);
    EXPECT_EQ(interface->indexOfChild(interface->child(0)), 0);
    EXPECT_EQ(interface->indexOfChild(interface->child(1)), 1);
    EXPECT_EQ(interface->child(1)->object(), combo.lineEdit());
    EXPECT_EQ(interface->child(2), nullptr);
}

TEST_F(FieldComboTest, aClickSelectsTheShownEntryButNotWhatIsBeingTyped) {
    combo.show();
    combo.activateWindow();
    QLineEdit* edit = combo.lineEdit();
    QTest::mouseClick(edit, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return edit->selectedText() == edit->text(); }));
    edit->deselect();
    QTest::mouseClick(edit, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return edit->selectedText() == edit->text(); }));
    edit->setText(u"esp"_s);
    QTest::mouseClick(edit, Qt::LeftButton);
    drainEvents();
    EXPECT_FALSE(edit->hasSelectedText());
}

TEST_F(FieldComboTest, opensAndClosesWhenAnAssistiveProgramAsks) {
    combo.show();
    QAccessibleInterface* interface = accessible(combo);
    QAccessibleActionInterface* action = interface->actionInterface();
    ASSERT_NE(action, nullptr);
    action->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(waitUntil([&] { return bool(interface->state().expanded); }));
    action->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(waitUntil([&] { return !interface->state().expanded; }));
}

} // namespace

} // namespace orv::test
