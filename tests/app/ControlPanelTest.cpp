#include "ControlPanel.h"

#include "AudioManager.h"
#include "Controls.h"
#include "DefaultsStore.h"
#include "Fakes.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LogCapture.h"
#include "NotificationCentre.h"
#include "NullAudioCapture.h"
#include "PortProbe.h"
#include "RegisteredDefaults.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"
#include "WaitUntil.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTemporaryDir>

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

    /// Adopts a backend that somebody else runs.
    void adoptBackend() {
        probe.inUse = true;
        engine.startBackend();
    }

    static void choose(FieldCombo* combo, const QString& id) {
        const int index = combo->findData(id);
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }

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
                              .terminate = [] {},
                              .timings = {.captureStart = 1ms, .terminate = 1ms}}};
    VmixTracking vmix{settings};
    ControlPanel panel{{.settings = settings,
                        .audio = audio,
                        .engine = engine,
                        .controller = controller,
                        .l10n = l10n,
                        .vmix = vmix}};
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
    button(u"main.stop"_s)->click();
    EXPECT_TRUE(shows(text(u"main.stopping"_s)));
    EXPECT_NE(button(u"main.start"_s), nullptr);
    capture.finishStops();
    EXPECT_FALSE(shows(text(u"main.stopping"_s)));
}

TEST_F(ControlPanelTest, persistsWhatIsChosenAtOnce) {
    choose(field(u"lang.source"_s), u"en"_s);
    choose(field(u"lang.target"_s), u"es"_s);
    button(u"audio.system"_s)->click();
    button(u"option.original"_s)->click();
    EXPECT_EQ(store.string(u"sourceLang"_s), u"en"_s);
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

TEST_F(ControlPanelTest, refusesSingleAppUntilOneIsChosen) {
    adoptBackend();
    button(u"audio.app"_s)->click();
    button(u"main.start"_s)->click();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"No App Selected"_s);
}

TEST_F(ControlPanelTest, aNoticeStaysUntilItIsClosed) {
    panel.showNotice(u"The API key is missing."_s);
    EXPECT_TRUE(shows(u"The API key is missing."_s));
    panel.showNotice(u"The backend is outdated."_s);
    EXPECT_FALSE(shows(u"The API key is missing."_s));
    button(u"alert.ok"_s)->click();
    EXPECT_FALSE(shows(u"The backend is outdated."_s));
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

TEST_F(ControlPanelTest, nothingIsCutOffInAnyLanguage) {
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
