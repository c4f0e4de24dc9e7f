// What is chosen on the panel, and where it is kept.

#include "ControlPanelFixture.h"

#include <QAbstractItemView>
#include <QCompleter>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class ControlPanelChoices : public ControlPanelFixture {};

TEST_F(ControlPanelChoices, persistsWhatIsChosenAtOnce) {
    choose(field(u"lang.source"_s), u"en"_s);
    choose(field(u"lang.target"_s), u"es"_s);
    EXPECT_EQ(store.string(u"sourceLang"_s), u"en"_s);
    choose(field(u"lang.source"_s), u"auto"_s);
    button(u"audio.system"_s)->click();
    button(u"option.original"_s)->click();
    EXPECT_EQ(store.string(u"sourceLang"_s), u"auto"_s);
    EXPECT_EQ(store.string(u"targetLang"_s), u"es"_s);
    EXPECT_EQ(store.integer(u"audioSourceType"_s), 1);
    EXPECT_EQ(store.boolean(u"showOriginal"_s), true);
}

TEST_F(ControlPanelChoices, showingASettingDoesNotWriteIt) {
    EXPECT_FALSE(store.contains(u"showOriginal"_s));
    EXPECT_FALSE(store.contains(u"audioSourceType"_s));
    EXPECT_FALSE(store.contains(u"sourceLang"_s));
}

TEST_F(ControlPanelChoices, transcriptsCanBeSwitchedOffForThisLaunch) {
    button(u"option.transcript"_s)->click();
    EXPECT_FALSE(settings.saveTranscript.get());
}

TEST_F(ControlPanelChoices, followsSettingsThatChangeElsewhere) {
    settings.sourceLang.set(u"fr"_s);
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    EXPECT_EQ(field(u"lang.source"_s)->chosenId(), u"fr"_s);
    EXPECT_TRUE(button(u"audio.app"_s)->isChecked());
    EXPECT_TRUE(field(u"audio.app.select"_s)->isVisible());
    EXPECT_FALSE(field(u"audio.mic.label"_s)->isVisible());
}

TEST_F(ControlPanelChoices, offersAllLanguagesAndDetectionForTheSource) {
    EXPECT_EQ(field(u"lang.target"_s)->count() + 1, field(u"lang.source"_s)->count());
    EXPECT_EQ(field(u"lang.source"_s)->itemText(0), u"🔍 Auto-Detect"_s);
    EXPECT_LT(field(u"lang.target"_s)->findData(u"auto"_s), 0);
}

TEST_F(ControlPanelChoices, languagesAreFoundByTheirEnglishNameAndWithoutMarks) {
    typeInto(field(u"lang.source"_s), u"japanese"_s);
    EXPECT_EQ(settings.sourceLang.get(), u"ja"_s);
    typeInto(field(u"lang.target"_s), u"espanol"_s);
    EXPECT_EQ(settings.targetLang.get(), u"es"_s);
    typeInto(field(u"lang.source"_s), u"detect"_s);
    EXPECT_EQ(settings.sourceLang.get(), u"auto"_s);
}

TEST_F(ControlPanelChoices, whileALanguageIsTypedOnlyThoseThatMatchAreOffered) {
    FieldCombo* target = field(u"lang.target"_s);
    target->setFocus();
    target->lineEdit()->selectAll();
    QTest::keyClicks(target->lineEdit(), u"norw"_s);
    const QAbstractItemModel* offered = target->completer()->completionModel();
    ASSERT_EQ(offered->rowCount(), 2);
    EXPECT_TRUE(offered->index(0, 0).data().toString().endsWith(u"Norsk"));
    EXPECT_TRUE(offered->index(1, 0).data().toString().endsWith(u"Nynorsk"));
    QTest::keyClick(target->completer()->popup(), Qt::Key_Down);
    QTest::keyClick(target->completer()->popup(), Qt::Key_Down);
    QTest::keyClick(target->completer()->popup(), Qt::Key_Return);
    EXPECT_EQ(settings.targetLang.get(), u"nn"_s);
}

TEST_F(ControlPanelChoices, aStoredLanguageBeyondTheCatalogueIsShownAsItIs) {
    settings.sourceLang.set(u"xx"_s);
    settings.targetLang.set(u"yy"_s);
    EXPECT_EQ(field(u"lang.source"_s)->currentText(), u"xx"_s);
    EXPECT_EQ(field(u"lang.target"_s)->currentText(), u"yy"_s);
    l10n.setCurrent(UILanguage::German);
    EXPECT_EQ(field(u"lang.source"_s)->currentText(), u"xx"_s);
    settings.sourceLang.set(u"en"_s);
    EXPECT_LT(field(u"lang.source"_s)->findData(u"xx"_s), 0);
}

TEST_F(ControlPanelChoices, listsDevicesAndApplicationsAsTheyCome) {
    sound.answers().inputDevices = {{.id = u"usb"_s, .name = u"USB Mic"_s}};
    sound.answers().capturableApps = QList<RunningApp>{{.bundleId = u"vlc"_s, .name = u"VLC"_s}};
    button(u"audio.app.refresh"_s)->click();
    FieldCombo* devices = field(u"audio.mic.label"_s);
    FieldCombo* apps = field(u"audio.app.select"_s);
    ASSERT_TRUE(waitUntil([&] { return devices->count() == 2 && apps->count() == 2; }));
    choose(devices, u"usb"_s);
    choose(apps, u"vlc"_s);
    EXPECT_EQ(settings.selectedInputDevice.get(), u"usb"_s);
    EXPECT_EQ(settings.selectedAppBundleId.get(), u"vlc"_s);
    ASSERT_TRUE(settings.selectedApp.get().has_value());
    EXPECT_EQ(settings.selectedApp.get()->name, u"VLC"_s);
}

TEST_F(ControlPanelChoices, emptyListsSayHowToFillThem) {
    button(u"audio.app.refresh"_s)->click();
    ASSERT_TRUE(waitUntil([this] { return shows(text(u"audio.mic.none"_s)); }));
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    EXPECT_TRUE(shows(text(u"audio.app.none"_s)));
    EXPECT_FALSE(shows(text(u"audio.drm.warning.short"_s)));
    sound.answers().inputDevices = {{.id = u"usb"_s, .name = u"USB Mic"_s}};
    sound.answers().capturableApps = QList<RunningApp>{{.bundleId = u"vlc"_s, .name = u"VLC"_s}};
    button(u"audio.app.refresh"_s)->click();
    ASSERT_TRUE(waitUntil([this] { return shows(text(u"audio.drm.warning.short"_s)); }));
    EXPECT_FALSE(shows(text(u"audio.app.none"_s)));
    settings.audioSourceType.set(AudioSourceType::Microphone);
    EXPECT_FALSE(shows(text(u"audio.mic.none"_s)));
}

TEST_F(ControlPanelChoices, theMicrophonesSayThatSoundIsInReachOnlyWhileItIs) {
    sound.answers().capturableApps = std::nullopt;
    button(u"audio.app.refresh"_s)->click();
    ASSERT_TRUE(waitUntil([this] { return shows(text(u"audio.permission.needed"_s)); }));
    EXPECT_EQ(field(u"audio.mic.label"_s)->toolTip(), QString());
    l10n.setCurrent(UILanguage::German);
    EXPECT_EQ(field(u"audio.mic.label"_s)->toolTip(), QString());
    sound.answers().capturableApps = QList<RunningApp>();
    button(u"audio.permission.request"_s)->click();
    ASSERT_TRUE(waitUntil([this] { return !shows(text(u"audio.permission.needed"_s)); }));
    EXPECT_EQ(field(u"audio.mic.label"_s)->toolTip(), text(u"audio.permission.granted"_s));
}

TEST_F(ControlPanelChoices, everyOptionIsAStoredSetting) {
    const QList<std::pair<QString, QString>> options = {{u"option.overlay"_s, u"showOverlay"_s},
                                                        {u"option.original"_s, u"showOriginal"_s},
                                                        {u"option.speak"_s, u"speakTranslations"_s},
                                                        {u"audio.gain.auto"_s, u"autoGain"_s},
                                                        {u"vad.toggle"_s, u"vadEnabled"_s}};
    for (const auto& [key, stored] : options) {
        SCOPED_TRACE(stored.toStdString());
        const bool before = button(key)->isChecked();
        button(key)->click();
        EXPECT_EQ(store.boolean(stored), !before);
        button(key)->click();
        EXPECT_EQ(store.boolean(stored), before);
    }
}

TEST_F(ControlPanelChoices, theGainIsChosenWhileItDoesNotFollowByItself) {
    settings.autoGain.set(true);
    EXPECT_EQ(slider(u"audio.gain.label"_s), nullptr);
    settings.autoGain.set(false);
    QSlider* gain = slider(u"audio.gain.label"_s);
    ASSERT_NE(gain, nullptr);
    EXPECT_TRUE(shows(u"100%"_s));
    EXPECT_FALSE(store.contains(u"audioGain"_s));
    gain->triggerAction(QSlider::SliderSingleStepAdd);
    EXPECT_FLOAT_EQ(settings.audioGain.get(), 1.1F);
    EXPECT_TRUE(shows(u"110%"_s));
    l10n.setCurrent(UILanguage::French);
    EXPECT_TRUE(shows(u"110\u00A0%"_s));
}

TEST_F(ControlPanelChoices, aGainBeyondTheSliderStaysAsItIsUntilItIsMoved) {
    settings.autoGain.set(false);
    settings.audioGain.set(7.5F);
    EXPECT_EQ(slider(u"audio.gain.label"_s)->value(), slider(u"audio.gain.label"_s)->maximum());
    EXPECT_FLOAT_EQ(settings.audioGain.get(), 7.5F);
}

TEST_F(ControlPanelChoices, pausesAreTunedWhileTheyAreDetected) {
    QSlider* pause = slider(u"vad.pause"_s);
    QSlider* threshold = slider(u"vad.threshold"_s);
    ASSERT_NE(pause, nullptr);
    ASSERT_NE(threshold, nullptr);
    EXPECT_TRUE(shows(u"600\u00A0ms"_s));
    EXPECT_TRUE(shows(u"\u221235\u00A0dB"_s));
    pause->triggerAction(QSlider::SliderSingleStepAdd);
    threshold->triggerAction(QSlider::SliderSingleStepSub);
    EXPECT_DOUBLE_EQ(audio.vadSilenceDuration(), 650);
    EXPECT_FLOAT_EQ(audio.vadThreshold(), -36);
    button(u"vad.toggle"_s)->click();
    EXPECT_FALSE(pause->isVisible());
    EXPECT_FALSE(threshold->isVisible());
}

TEST_F(ControlPanelChoices, aDragIsStoredWhenItEnds) {
    QSlider* pause = slider(u"vad.pause"_s);
    pause->setSliderDown(true);
    pause->setSliderPosition(20);
    EXPECT_TRUE(shows(u"1000\u00A0ms"_s));
    EXPECT_DOUBLE_EQ(audio.vadSilenceDuration(), 600);
    pause->setSliderDown(false);
    EXPECT_DOUBLE_EQ(audio.vadSilenceDuration(), 1000);
}

} // namespace

} // namespace orv::test
