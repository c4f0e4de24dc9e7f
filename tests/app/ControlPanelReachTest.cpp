// Whether everybody can read and reach what is on the panel.

#include "ControlPanelFixture.h"
#include "MissingChildren.h"
#include "ReadingText.h"

#include <QAccessible>
#include <QLayout>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class ControlPanelReach : public ControlPanelFixture {};

TEST_F(ControlPanelReach, assistiveProgramsSwitchWithoutAClick) {
    for (const QString& key : {u"audio.system"_s, u"option.original"_s, u"vad.toggle"_s}) {
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(button(key));
        interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    }
    EXPECT_EQ(settings.audioSourceType.get(), AudioSourceType::SystemAudio);
    EXPECT_TRUE(settings.showOriginal.get());
    EXPECT_FALSE(audio.vadEnabled());
    EXPECT_TRUE(shows(text(u"vad.fixed"_s)));
}

TEST_F(ControlPanelReach, noQuestionOfAnAssistiveProgramIsTooMuch) {
    EXPECT_GT(askForMissingChildren(QAccessible::queryAccessibleInterface(&panel)), 40);
}

TEST_F(ControlPanelReach, everyTextFollowsTheLanguageAtOnce) {
    l10n.setCurrent(UILanguage::German);
    engine.retranslate();
    for (const QString& key : {u"main.start"_s, u"main.quit"_s, u"main.backend.start"_s,
                               u"audio.mic"_s, u"audio.app.refresh"_s, u"vad.toggle"_s}) {
        EXPECT_NE(button(key), nullptr) << key.toStdString();
    }
    EXPECT_TRUE(shows(u"Backend gestoppt"_s));
    for (const QString& heading : {u"audio.source"_s, u"lang.title"_s}) {
        EXPECT_TRUE(shows(text(heading))) << heading.toStdString();
    }
    EXPECT_NE(field(u"lang.source"_s), nullptr);
    EXPECT_EQ(field(u"audio.mic.label"_s)->itemText(0), text(u"audio.mic.default"_s));
}

TEST_F(ControlPanelReach, everyControlIsKnownByWhatItShows) {
    for (QAbstractButton* candidate : panel.findChildren<QAbstractButton*>()) {
        if (candidate->text().isEmpty()) {
            continue;
        }
        EXPECT_EQ(QAccessible::queryAccessibleInterface(candidate)->text(QAccessible::Name),
                  candidate->text());
    }
    for (FieldCombo* combo : panel.findChildren<FieldCombo*>()) {
        EXPECT_FALSE(
            QAccessible::queryAccessibleInterface(combo)->text(QAccessible::Name).isEmpty());
    }
}

TEST_F(ControlPanelReach, keysStartAndStop) {
    adoptBackend();
    panel.activateWindow();
    ASSERT_TRUE(waitUntil([this] { return panel.isActiveWindow(); }));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        const bool before = controller.isTranslating();
        pressKey(key, Qt::ControlModifier);
        EXPECT_NE(controller.isTranslating(), before);
        capture.finishStops();
    }
    EXPECT_EQ(button(u"main.start"_s)->toolTip(),
              u"Starts or stops the translation (Ctrl+Return)"_s);
}

TEST_F(ControlPanelReach, tabReachesEveryControlOnceAndInReadingOrder) {
    settings.autoGain.set(false);
    panel.resize(panel.minimumWidth(), panel.layout()->totalHeightForWidth(panel.minimumWidth()));
    panel.activateWindow();
    ASSERT_TRUE(waitUntil([this] { return panel.isActiveWindow(); }));
    drainEvents();
    QList<QWidget*> reached;
    for (int i = 0; i < 40; ++i) {
        pressKey(Qt::Key_Tab, Qt::NoModifier);
        QWidget* focused = panel.focusWidget();
        ASSERT_NE(focused, nullptr);
        if (reached.contains(focused)) {
            break;
        }
        reached.append(focused);
    }
    for (QAbstractButton* candidate : panel.findChildren<QAbstractButton*>()) {
        const bool isChosenElsewhere =
            candidate->isCheckable() && candidate->group() != nullptr && !candidate->isChecked();
        if (candidate->isVisible() && !isChosenElsewhere) {
            EXPECT_TRUE(reached.contains(candidate)) << candidate->text().toStdString();
        }
    }
    for (QSlider* candidate : panel.findChildren<QSlider*>()) {
        EXPECT_TRUE(reached.contains(candidate));
    }
    for (FieldCombo* candidate : panel.findChildren<FieldCombo*>()) {
        EXPECT_TRUE(!candidate->isVisible() || reached.contains(candidate));
    }
    // Downwards, but for the one step from the end to the beginning.
    QStringList upwards;
    for (qsizetype i = 1; i < reached.size(); ++i) {
        const auto y = [this](const QWidget* widget) {
            return widget->mapTo(&panel, widget->rect().center()).y();
        };
        if (y(reached[i]) < y(reached[i - 1]) - 8) {
            upwards.append(reached[i]->accessibleName());
        }
    }
    EXPECT_LE(upwards.size(), 1) << upwards.join(u", ").toStdString();
}

TEST_F(ControlPanelReach, errorsAreSaidInFullAndTheSectionKeepsItsHeight) {
    auto* texts = panel.findChild<ReadingText*>();
    const QSize before = texts->size();
    texts->setTexts(u"heard"_s, u"gehört"_s);
    texts->setRemark(QString(u"broken "_s).repeated(80), Tone::Error);
    drainEvents();
    EXPECT_EQ(texts->size(), before);
    EXPECT_TRUE(texts->toPlainText().startsWith(u"broken broken"_s));
    EXPECT_TRUE(texts->toPlainText().endsWith(u"heard\ngehört"_s));
}

/// Every text that people read has the room it asks for.
TEST_F(ControlPanelReach, nothingIsCutOffInAnyLanguage) {
    panel.setHasTray(false);
    button(u"audio.app.refresh"_s)->click();
    ASSERT_TRUE(waitUntil([this] { return shows(text(u"audio.mic.none"_s)); }));
    adoptBackend();
    controller.startTranslation();
    QList<std::pair<UILanguage, AudioSourceType>> cases;
    for (const UILanguage language : UILanguage::allCases()) {
        for (const AudioSourceType source :
             {AudioSourceType::Microphone, AudioSourceType::SystemAudio,
              AudioSourceType::SingleApp}) {
            cases.append({language, source});
        }
    }
    for (const auto& [language, source] : cases) {
        settings.audioSourceType.set(source);
        l10n.setCurrent(language);
        panel.resize(panel.minimumWidth(),
                     panel.layout()->totalHeightForWidth(panel.minimumWidth()));
        drainEvents();
        SCOPED_TRACE(language.rawValue().toStdString() + std::to_string(static_cast<int>(source)));
        for (const FieldCombo* combo : panel.findChildren<FieldCombo*>()) {
            if (combo->isVisible()) {
                EXPECT_GE(combo->height(), combo->minimumSizeHint().height());
                EXPECT_GE(combo->width(), combo->minimumSizeHint().width());
                const QString shown = combo->currentText();
                const int room = combo->lineEdit() != nullptr ? combo->lineEdit()->width() - 4
                                                              : combo->width() - 34;
                EXPECT_GE(room, combo->fontMetrics().horizontalAdvance(shown))
                    << shown.toStdString();
            }
        }
        for (const QWidget* widget : panel.findChildren<QWidget*>()) {
            const auto* label = qobject_cast<const QLabel*>(widget);
            const bool wraps = label != nullptr && label->wordWrap();
            if (!widget->isVisible() ||
                (label == nullptr && qobject_cast<const QAbstractButton*>(widget) == nullptr)) {
                continue;
            }
            const QString shown = label != nullptr
                                      ? label->text()
                                      : qobject_cast<const QAbstractButton*>(widget)->text();
            EXPECT_GE(widget->height(), wraps ? label->heightForWidth(label->width())
                                              : widget->minimumSizeHint().height())
                << shown.toStdString();
            EXPECT_GE(widget->width(), wraps ? 1 : widget->minimumSizeHint().width())
                << shown.toStdString();
        }
    }
}

} // namespace

} // namespace orv::test
