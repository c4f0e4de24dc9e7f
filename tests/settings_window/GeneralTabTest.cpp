// The first tab, beyond showing and storing values.

#include "GeneralTab.h"
#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "ControlProbe.h"
#include "SettingsWindowFixture.h"
#include "SubtitleChoices.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolButton>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

using GeneralTabTest = SettingsWindowFixture;

TEST_F(GeneralTabTest, theWarningAboutTheNetworkStandsWhileOthersMayConnect) {
    const QString warning = text(u"settings.backend.network.warn"_s);
    EXPECT_FALSE(shows(warning));
    press(text(u"settings.backend.network"_s));
    EXPECT_TRUE(shows(warning));
    EXPECT_TRUE(shows(text(u"settings.backend.network.hint"_s)));
    settings.networkAccess.set(false);
    EXPECT_FALSE(shows(warning));
}

TEST_F(GeneralTabTest, whatIsChangedInThePanelShowsHere) {
    settings.autoGain.set(false);
    settings.speakTranslation.set(true);
    EXPECT_FALSE(control<QCheckBox>(text(u"settings.autogain"_s))->isChecked());
    EXPECT_TRUE(control<QCheckBox>(text(u"option.speak"_s))->isChecked());
}

TEST_F(GeneralTabTest, theOverlaysAddressFollowsItsPortAndIsCopied) {
    auto* address = control<QLineEdit>(u"Browser Overlay (OBS): URL"_s);
    ASSERT_NE(address, nullptr);
    EXPECT_TRUE(address->isReadOnly());
    EXPECT_EQ(address->text(), u"http://localhost:8077/overlay"_s);
    settings.obsOverlayPort.set(9001);
    press(text(u"settings.obs.copy"_s));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"http://localhost:9001/overlay"_s);
    EXPECT_NE(control<QAbstractButton>(text(u"settings.obs.copied"_s)), nullptr);
}

TEST(OverlayAddress, namesThePortThatIsServed) {
    EXPECT_EQ(overlayAddress(0), u"http://localhost:8077/overlay"_s);
    EXPECT_EQ(overlayAddress(70000), u"http://localhost:65535/overlay"_s);
    EXPECT_EQ(overlayAddress(80), u"http://localhost:80/overlay"_s);
}

TEST_F(GeneralTabTest, aPortIsStoredWhenItIsComplete) {
    auto* port = control<QSpinBox>(u"Browser Overlay (OBS): Port"_s);
    typeInto(*port, u"90"_s);
    EXPECT_EQ(settings.obsOverlayPort.get(), 8077);
    window->close();
    EXPECT_EQ(settings.obsOverlayPort.get(), 90);
}

TEST_F(GeneralTabTest, noPortBeyondTheRangeCanBeTyped) {
    auto* port = control<QSpinBox>(u"vMix: Port"_s);
    typeInto(*port, u"70000"_s);
    window->close();
    EXPECT_EQ(settings.vmixPort.get(), 7000); // The last digit was not taken.
    window->show();
    typeInto(*port, u"0"_s);
    window->close();
    EXPECT_EQ(settings.vmixPort.get(), 7000);
    window->show();
    typeInto(*port, u""_s);
    window->close();
    EXPECT_EQ(settings.vmixPort.get(), 7000);
}

TEST_F(GeneralTabTest, aPortOutOfRangeInTheStoreIsNotChangedByLooking) {
    settings.vrchatPort.set(70000);
    open();
    EXPECT_EQ(control<QSpinBox>(u"VRChat Chatbox (OSC): Port"_s)->value(), 65535);
    window->close();
    EXPECT_EQ(settings.vrchatPort.get(), 70000);
}

TEST_F(GeneralTabTest, theMouseWheelChangesNothing) {
    for (const QString& name : {u"Opacity"_s, u"vMix: Port"_s, u"VRChat Chatbox (OSC): Send"_s,
                                u"Interface Language"_s, u"Current Model"_s}) {
        auto* field = control(name);
        const QString before = shownByControl(*field);
        QWheelEvent turn({5, 5}, field->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(field, &turn);
        EXPECT_EQ(shownByControl(*field), before) << qPrintable(name);
        EXPECT_FALSE(turn.isAccepted()) << qPrintable(name); // The page scrolls instead.
    }
}

TEST_F(GeneralTabTest, blanksRoundAddressesAndKeysAreNotStored) {
    typeInto(*control(u"vMix: Host"_s), u" studio "_s);
    EXPECT_EQ(settings.vmixHost.get(), u"studio"_s);
    typeInto(*control(u"Deepgram: API Key"_s), u" abc "_s);
    EXPECT_EQ(store.string(u"deepgramApiKey"_s), u"abc"_s);
}

TEST_F(GeneralTabTest, titleFieldsOfVMixMayBeEmptyAndKeepTheirBlanks) {
    typeInto(*control(u"vMix: Original field"_s), u""_s);
    EXPECT_EQ(store.string(u"vmixFieldOriginal"_s), u""_s);
    typeInto(*control(u"vMix: Translation field"_s), u"Line 1 "_s);
    EXPECT_EQ(store.string(u"vmixFieldTranslation"_s), u"Line 1 "_s);
}

TEST_F(GeneralTabTest, everyOtherSendModeIsShownAsBothAndKept) {
    settings.vrchatSendMode.set(7);
    EXPECT_EQ(shownByControl(*control(u"VRChat Chatbox (OSC): Send"_s)), u"2"_s);
    EXPECT_EQ(settings.vrchatSendMode.get(), 7);
}

TEST_F(GeneralTabTest, theVRChatTestIsSentWhetherEnabledOrNot) {
    press(text(u"settings.vrc.test"_s));
    EXPECT_EQ(vrchatTests, 1);
    settings.vrchatEnabled.set(true);
    press(text(u"settings.vrc.test"_s));
    EXPECT_EQ(vrchatTests, 2);
}

TEST_F(GeneralTabTest, aFurtherOutputBringsItsCard) {
    cards.emplace_back([](CardColumn& column, const TabContext& context) {
        Card& card = *column.addCard();
        card.addHeading()->setText(u"Teleprompter"_s);
        addSwitch(card, context.bindings, u"settings.obs.enable"_s,
                  context.environment.settings.obsOverlayEnabled);
    });
    open();
    showTab(0);
    ASSERT_TRUE(shows(u"Teleprompter"_s));
    const auto top = [this](const QString& heading) {
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (label->text() == heading) {
                return label->mapTo(window.get(), QPoint()).y();
            }
        }
        return -1;
    };
    const QStringList order = {text(u"settings.obs.section"_s), text(u"settings.vrc.section"_s),
                               u"vMix"_s, u"Teleprompter"_s, text(u"settings.notifications"_s)};
    for (qsizetype i = 1; i < order.size(); ++i) {
        EXPECT_LT(top(order[i - 1]), top(order[i])) << qPrintable(order[i]);
    }
}

TEST_F(GeneralTabTest, theSubtitlesAreToldOfANewAppearance) {
    int appearanceChanges = 0;
    int autoStopChanges = 0;
    watchSubtitleChoices(settings, window.get(),
                         [&](const SubtitleChoices& /*choices*/) { ++appearanceChanges; });
    settings.autoStopBackend.watch(window.get(), [&](bool /*stops*/) { ++autoStopChanges; });
    press(text(u"settings.overlay.border"_s));
    EXPECT_EQ(appearanceChanges, 1);
    changeControl(*control(u"Text Color (#RRGGBB)"_s));
    EXPECT_EQ(store.string(u"overlayTextColor"_s), u"#123ABC"_s);
    EXPECT_EQ(appearanceChanges, 2);
    press(text(u"settings.backend.autostart"_s));
    EXPECT_EQ(appearanceChanges, 2);
    EXPECT_EQ(autoStopChanges, 0);
    press(text(u"settings.backend.autostop"_s));
    EXPECT_EQ(autoStopChanges, 1);
}

TEST_F(GeneralTabTest, thePreviewShowsTheAppearanceAtOnce) {
    auto* preview = control(text(u"settings.overlay.preview"_s));
    ASSERT_NE(preview, nullptr);
    const auto picture = [preview] { return preview->grab().toImage(); };
    const QImage before = picture();
    for (const QString& name :
         {u"Background Color (#RRGGBB)"_s, u"Text Color (#RRGGBB)"_s, u"Border Color (#RRGGBB)"_s,
          u"Opacity"_s, u"Show Border"_s, u"Show Original Text"_s}) {
        const QImage last = picture();
        changeControl(*control(name));
        EXPECT_NE(picture(), last) << qPrintable(name);
    }
    EXPECT_EQ(picture().size(), before.size());
}

TEST_F(GeneralTabTest, theOpacityIsAPercentageAsInTheInterfacesLanguage) {
    settings.overlayOpacity.set(0.4);
    open();
    showTab(0);
    EXPECT_TRUE(shows(u"40%"_s));
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(shows(u"40\u00A0%"_s));
}

TEST_F(GeneralTabTest, whatIsNoColourIsNotStored) {
    auto* hex = control<QLineEdit>(u"Background Color (#RRGGBB)"_s);
    typeInto(*hex, u"#12345"_s);
    EXPECT_FALSE(store.contains(u"overlayBgColor"_s));
    QFocusEvent leaving(QEvent::FocusOut);
    QCoreApplication::sendEvent(hex, &leaving);
    EXPECT_EQ(hex->text(), u"#90EE90"_s);
    typeInto(*hex, u"abcdef"_s);
    EXPECT_EQ(store.string(u"overlayBgColor"_s), u"#ABCDEF"_s);
}

TEST_F(GeneralTabTest, aColourIsChosenFromThePalette) {
    press(u"Border Color"_s);
    auto* palette = QApplication::activePopupWidget();
    ASSERT_NE(palette, nullptr);
    auto* white = controlIn<QToolButton>(*palette, u"#FFFFFF"_s);
    ASSERT_NE(white, nullptr);
    white->click();
    EXPECT_EQ(store.string(u"overlayBorderColor"_s), u"#FFFFFF"_s);
    EXPECT_EQ(shownByControl(*control(u"Border Color (#RRGGBB)"_s)), u"#FFFFFF"_s);
    drainEvents();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(GeneralTabTest, aColourThatIsNoneInTheStoreIsShownAsTheDefault) {
    settings.overlayBgColor.set(u"green"_s);
    open();
    EXPECT_EQ(shownByControl(*control(u"Background Color (#RRGGBB)"_s)), u"#90EE90"_s);
    EXPECT_EQ(store.string(u"overlayBgColor"_s), u"green"_s);
}

} // namespace

} // namespace orv::test
