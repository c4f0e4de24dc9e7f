#include "ControlPanel.h"

#include "AudioManager.h"
#include "Controls.h"
#include "DefaultsStore.h"
#include "Fakes.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LevelBar.h"
#include "LogCapture.h"
#include "Look.h"
#include "NotificationCentre.h"
#include "NullAppearance.h"
#include "NullAudioCapture.h"
#include "PortProbe.h"
#include "ReadingText.h"
#include "SliderField.h"
#include "SwitchRow.h"
#include "Symbols.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"
#include "WaitUntil.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QCheckBox>
#include <QCompleter>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class FakeProbe : public PortProbe {
  public:
    bool isPortInUse(quint16 /*port*/) override { return inUse; }

    bool inUse = false;
};

class ControlPanelTest : public ::testing::Test {
  protected:
    ControlPanelTest() {
        panel.show();
        drainEvents();
    }

    QString text(const QString& key) const { return l10n.platformText(key); }

    /// The button on screen that shows the text of `key`, or null.
    QAbstractButton* button(const QString& key) {
        for (QAbstractButton* candidate : panel.findChildren<QAbstractButton*>()) {
            if (candidate->isVisible() && candidate->text() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    FieldCombo* field(const QString& key) {
        for (FieldCombo* candidate : panel.findChildren<FieldCombo*>()) {
            if (candidate->accessibleName() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    bool shows(const QString& wanted) {
        for (const QLabel* label : panel.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == wanted) {
                return true;
            }
        }
        return false;
    }

    /// The slider on screen that is called by the text of `key`, or null.
    QSlider* slider(const QString& key) {
        for (QSlider* candidate : panel.findChildren<QSlider*>()) {
            if (candidate->isVisible() && candidate->accessibleName() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    /// Presses a key as a person does: whoever has the focus gets it, after the shortcuts.
    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(panel.windowHandle(), key, modifiers);
    }

    /// Adopts a backend that somebody else runs.
    void adoptBackend() {
        probe.inUse = true;
        engine.startBackend();
    }

    static QImage picture(const QIcon& icon) { return icon.pixmap(32, 32).toImage(); }

    /// Types into a field and leaves it.
    static void typeInto(FieldCombo* combo, const QString& typed) {
        combo->lineEdit()->selectAll();
        QTest::keyClicks(combo->lineEdit(), typed);
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
    }

    static void choose(FieldCombo* combo, const QString& id) {
        const int index = combo->findData(id);
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }

    NullAppearance appearance;
    Look look{appearance};
    LogCapture log;
    QTemporaryDir folder;
    DefaultsStore store{folder.path() + u"/defaults.json"_s};
    L10n l10n{store, u"en"_s};
    TranslationSettings settings{store};
    NotificationCentre centre;
    NullAudioCapture sound;
    FakeProbe probe;
    FakeDialogs dialogs;
    FakeCapture capture;
    TranslationEngine engine{
        BackendEnvironment{.interpreter = folder.path() + u"/python3"_s,
                           .script = folder.path() + u"/server.py"_s,
                           .probe = probe,
                           .dialogs = dialogs,
                           .notifications = centre,
                           .text = [this](const QString& key) { return text(key); },
                           .networkAccess = [] { return false; }}};
    std::unique_ptr<BackendControl> backend = makeBackendControl(engine);
    AudioManager audio{AudioEnvironment{.settings = settings,
                                        .store = store,
                                        .capture = sound,
                                        .notifications = centre,
                                        .engineFactory = {},
                                        .sendToVmix = {},
                                        .showNotice = {},
                                        .transcriptFolder = folder.path()}};
    TranslationController controller{
        ControllerEnvironment{.settings = settings,
                              .capture = capture,
                              .backend = *backend,
                              .notifications = centre,
                              .dialogs = dialogs,
                              .text = [this](const QString& key) { return text(key); },
                              .endSubtitles = [] {},
                              .terminate = [] {},
                              .timings = {.captureStart = 1ms, .terminate = 1ms}}};
    VmixTracking vmix{settings};
    int settingsShown = 0;
    ControlPanel panel{{.settings = settings,
                        .audio = audio,
                        .engine = engine,
                        .controller = controller,
                        .l10n = l10n,
                        .vmix = vmix,
                        .showSettings = [this] { ++settingsShown; }}};
};

TEST_F(ControlPanelTest, showsTheBackendsStatusAndTheButtonThatFits) {
    EXPECT_TRUE(shows(text(u"engine.stopped"_s)));
    EXPECT_NE(button(u"main.backend.start"_s), nullptr);
    EXPECT_EQ(button(u"main.backend.stop"_s), nullptr);
    adoptBackend();
    EXPECT_TRUE(shows(text(u"engine.running"_s)));
    EXPECT_NE(button(u"main.backend.stop"_s), nullptr);
    EXPECT_EQ(button(u"main.backend.start"_s), nullptr);
}

TEST_F(ControlPanelTest, theBackendsButtonStartsAndStopsIt) {
    button(u"main.backend.start"_s)->click();
    EXPECT_TRUE(shows(text(u"engine.notinstalled"_s)));
    adoptBackend();
    button(u"main.backend.stop"_s)->click();
    EXPECT_TRUE(shows(text(u"engine.stopping"_s)));
}

TEST_F(ControlPanelTest, refusesToStartWithoutABackend) {
    button(u"main.start"_s)->click();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"Backend Not Ready"_s);
    EXPECT_NE(button(u"main.start"_s), nullptr);
}

TEST_F(ControlPanelTest, theMainButtonFollowsTheRun) {
    adoptBackend();
    button(u"main.start"_s)->click();
    EXPECT_TRUE(shows(text(u"status.listening"_s)));
    ASSERT_NE(button(u"main.stop"_s), nullptr);
    EXPECT_EQ(picture(button(u"main.stop"_s)->icon()), picture(symbol(u"stop.circle.fill"_s)));
    button(u"main.stop"_s)->click();
    EXPECT_TRUE(shows(text(u"main.stopping"_s)));
    ASSERT_NE(button(u"main.start"_s), nullptr);
    EXPECT_EQ(picture(button(u"main.start"_s)->icon()), picture(symbol(u"play.circle.fill"_s)));
    capture.finishStops();
    EXPECT_FALSE(shows(text(u"main.stopping"_s)));
}

TEST_F(ControlPanelTest, persistsWhatIsChosenAtOnce) {
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

TEST_F(ControlPanelTest, assistiveProgramsSwitchWithoutAClick) {
    for (const QString& key : {u"audio.system"_s, u"option.original"_s, u"vad.toggle"_s}) {
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(button(key));
        interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    }
    EXPECT_EQ(settings.audioSourceType.get(), AudioSourceType::SystemAudio);
    EXPECT_TRUE(settings.showOriginal.get());
    EXPECT_FALSE(audio.vadEnabled());
    EXPECT_TRUE(shows(text(u"vad.fixed"_s)));
}

TEST_F(ControlPanelTest, showingASettingDoesNotWriteIt) {
    EXPECT_FALSE(store.contains(u"showOriginal"_s));
    EXPECT_FALSE(store.contains(u"audioSourceType"_s));
    EXPECT_FALSE(store.contains(u"sourceLang"_s));
}

TEST_F(ControlPanelTest, transcriptsCanBeSwitchedOffForThisLaunch) {
    button(u"option.transcript"_s)->click();
    EXPECT_FALSE(settings.saveTranscript.get());
}

TEST_F(ControlPanelTest, followsSettingsThatChangeElsewhere) {
    settings.sourceLang.set(u"fr"_s);
    settings.audioSourceType.set(AudioSourceType::SingleApp);
    EXPECT_EQ(field(u"lang.source"_s)->chosenId(), u"fr"_s);
    EXPECT_TRUE(button(u"audio.app"_s)->isChecked());
    EXPECT_TRUE(field(u"audio.app.select"_s)->isVisible());
    EXPECT_FALSE(field(u"audio.mic.label"_s)->isVisible());
}

TEST_F(ControlPanelTest, offersAllLanguagesAndDetectionForTheSource) {
    EXPECT_EQ(field(u"lang.target"_s)->count() + 1, field(u"lang.source"_s)->count());
    EXPECT_EQ(field(u"lang.source"_s)->itemText(0), u"🔍 Auto-Detect"_s);
    EXPECT_LT(field(u"lang.target"_s)->findData(u"auto"_s), 0);
}

TEST_F(ControlPanelTest, languagesAreFoundByTheirEnglishNameAndWithoutMarks) {
    typeInto(field(u"lang.source"_s), u"japanese"_s);
    EXPECT_EQ(settings.sourceLang.get(), u"ja"_s);
    typeInto(field(u"lang.target"_s), u"espanol"_s);
    EXPECT_EQ(settings.targetLang.get(), u"es"_s);
    typeInto(field(u"lang.source"_s), u"detect"_s);
    EXPECT_EQ(settings.sourceLang.get(), u"auto"_s);
}

TEST_F(ControlPanelTest, whileALanguageIsTypedOnlyThoseThatMatchAreOffered) {
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

TEST_F(ControlPanelTest, aStoredLanguageBeyondTheCatalogueIsShownAsItIs) {
    settings.sourceLang.set(u"xx"_s);
    settings.targetLang.set(u"yy"_s);
    EXPECT_EQ(field(u"lang.source"_s)->currentText(), u"xx"_s);
    EXPECT_EQ(field(u"lang.target"_s)->currentText(), u"yy"_s);
    l10n.setCurrent(UILanguage::German);
    EXPECT_EQ(field(u"lang.source"_s)->currentText(), u"xx"_s);
    settings.sourceLang.set(u"en"_s);
    EXPECT_LT(field(u"lang.source"_s)->findData(u"xx"_s), 0);
}

TEST_F(ControlPanelTest, listsDevicesAndApplicationsAsTheyCome) {
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

TEST_F(ControlPanelTest, emptyListsSayHowToFillThem) {
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

TEST_F(ControlPanelTest, theMicrophonesSayThatSoundIsInReachOnlyWhileItIs) {
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

TEST_F(ControlPanelTest, theEmptyResultNamesTheNextStep) {
    const auto* result = panel.findChild<ReadingText*>();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.backend"_s));
    adoptBackend();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
    controller.startTranslation();
    EXPECT_EQ(result->placeholderText(), text(u"panel.result.empty"_s));
    controller.stopTranslation();
    EXPECT_EQ(result->placeholderText(), text(u"panel.result.empty"_s)) << "the end is awaited";
    capture.finishStops();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
    l10n.setCurrent(UILanguage::French);
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
}

TEST_F(ControlPanelTest, tellsThatItsWindowIsTheOnlyWayInWhileThereIsNoTray) {
    EXPECT_FALSE(shows(text(u"panel.notray"_s)));
    panel.setHasTray(false);
    EXPECT_TRUE(shows(text(u"panel.notray"_s)));
    l10n.setCurrent(UILanguage::Italian);
    EXPECT_TRUE(shows(text(u"panel.notray"_s)));
    panel.setHasTray(true);
    EXPECT_FALSE(shows(text(u"panel.notray"_s)));
}

TEST_F(ControlPanelTest, refusesSingleAppUntilOneIsChosen) {
    adoptBackend();
    button(u"audio.app"_s)->click();
    button(u"main.start"_s)->click();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"No App Selected"_s);
}

TEST_F(ControlPanelTest, aNoticeStaysUntilItIsClosed) {
    panel.showNotice({AudioNotice::Kind::ServiceAccountMissing, {}});
    EXPECT_TRUE(shows(text(u"notice.serviceaccount.missing"_s)));
    panel.showNotice({AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s});
    EXPECT_FALSE(shows(text(u"notice.serviceaccount.missing"_s)));
    EXPECT_TRUE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
    button(u"alert.ok"_s)->click();
    EXPECT_FALSE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
}

TEST_F(ControlPanelTest, aNoticeFollowsTheLanguageAndStaysClosed) {
    panel.showNotice({AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s});
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
    l10n.setCurrent(UILanguage::Spanish);
    ASSERT_NE(button(u"alert.ok"_s), nullptr);
    button(u"alert.ok"_s)->click();
    l10n.setCurrent(UILanguage::English);
    EXPECT_FALSE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
}

TEST_F(ControlPanelTest, quitIsThePanelsOwn) {
    button(u"main.quit"_s)->click();
    EXPECT_TRUE(log.contains(u"🛑 Beende App..."_s));
}

TEST_F(ControlPanelTest, everyTextFollowsTheLanguageAtOnce) {
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

TEST_F(ControlPanelTest, everyControlIsKnownByWhatItShows) {
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

TEST_F(ControlPanelTest, everyOptionIsAStoredSetting) {
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

TEST_F(ControlPanelTest, theGainIsChosenWhileItDoesNotFollowByItself) {
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

TEST_F(ControlPanelTest, aGainBeyondTheSliderStaysAsItIsUntilItIsMoved) {
    settings.autoGain.set(false);
    settings.audioGain.set(7.5F);
    EXPECT_EQ(slider(u"audio.gain.label"_s)->value(), slider(u"audio.gain.label"_s)->maximum());
    EXPECT_FLOAT_EQ(settings.audioGain.get(), 7.5F);
}

TEST_F(ControlPanelTest, pausesAreTunedWhileTheyAreDetected) {
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

TEST_F(ControlPanelTest, aDragIsStoredWhenItEnds) {
    QSlider* pause = slider(u"vad.pause"_s);
    pause->setSliderDown(true);
    pause->setSliderPosition(20);
    EXPECT_TRUE(shows(u"1000\u00A0ms"_s));
    EXPECT_DOUBLE_EQ(audio.vadSilenceDuration(), 600);
    pause->setSliderDown(false);
    EXPECT_DOUBLE_EQ(audio.vadSilenceDuration(), 1000);
}

TEST_F(ControlPanelTest, theSettingsButtonOpensTheSettings) {
    button(u"main.settings"_s)->click();
    EXPECT_EQ(settingsShown, 1);
}

TEST_F(ControlPanelTest, keysStartAndStop) {
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

TEST_F(ControlPanelTest, tabReachesEveryControlOnceAndInReadingOrder) {
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

TEST_F(ControlPanelTest, errorsAreSaidInFullAndTheSectionKeepsItsHeight) {
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
TEST_F(ControlPanelTest, nothingIsCutOffInAnyLanguage) {
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
