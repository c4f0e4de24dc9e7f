// What the settings window does beyond showing and storing values.

#include "ControlProbe.h"
#include "EngineOptions.h"
#include "GeneralTab.h"
#include "KeyField.h"
#include "LanguageManager.h"
#include "SettingsWindowFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScrollArea>
#include <QSet>
#include <QSpinBox>
#include <QToolButton>
#include <QWheelEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class SettingsWindowTest : public SettingsWindowFixture {
  protected:
    bool shows(const QString& wanted) const {
        const auto labels = window->findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) {
            return label->isVisible() && label->text() == wanted;
        });
    }

    void showTab(int tab) const {
        tabs()->setCurrentIndex(tab);
        drainEvents();
    }

    QStringList tabTexts() const {
        QStringList texts;
        for (int tab = 0; tab < tabs()->count(); ++tab) {
            texts.append(tabs()->tabText(tab));
        }
        return texts;
    }

    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(window.get(), &event);
    }
};

TEST_F(SettingsWindowTest, hasSixTabsInTheirOrder) {
    EXPECT_EQ(tabTexts(), (QStringList{u"General"_s, u"Engines"_s, u"Whisper"_s, u"Languages"_s,
                                       u"Storage"_s, u"Info"_s}));
    EXPECT_EQ(tabs()->currentIndex(), 0);
}

TEST_F(SettingsWindowTest, isFiveHundredByFourHundredAndTwentyAndCanBeClosedAndShownAgain) {
    EXPECT_EQ(window->size(), QSize(500, 420));
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

TEST_F(SettingsWindowTest, everyControlIsReachedByTheTabKey) {
    QApplication::setActiveWindow(window.get());
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

// General.

TEST_F(SettingsWindowTest, theWarningAboutTheNetworkStandsWhileOthersMayConnect) {
    const QString warning = text(u"settings.backend.network.warn"_s);
    EXPECT_FALSE(shows(warning));
    press(text(u"settings.backend.network"_s));
    EXPECT_TRUE(shows(warning));
    EXPECT_TRUE(shows(text(u"settings.backend.network.hint"_s)));
    settings.networkAccess.set(false);
    EXPECT_FALSE(shows(warning));
}

TEST_F(SettingsWindowTest, whatIsChangedInThePanelShowsHere) {
    settings.autoGain.set(false);
    settings.speakTranslation.set(true);
    EXPECT_FALSE(control<QCheckBox>(text(u"settings.autogain"_s))->isChecked());
    EXPECT_TRUE(control<QCheckBox>(text(u"option.speak"_s))->isChecked());
}

TEST_F(SettingsWindowTest, theOverlaysAddressFollowsItsPortAndIsCopied) {
    auto* address = control<QLineEdit>(u"Browser Overlay (OBS): URL"_s);
    ASSERT_NE(address, nullptr);
    EXPECT_TRUE(address->isReadOnly());
    EXPECT_EQ(address->text(), u"http://localhost:8077/overlay"_s);
    settings.obsOverlayPort.set(9001);
    press(text(u"settings.obs.copy"_s));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"http://localhost:9001/overlay"_s);
}

TEST(OverlayAddress, namesThePortThatIsServed) {
    EXPECT_EQ(overlayAddress(0), u"http://localhost:8077/overlay"_s);
    EXPECT_EQ(overlayAddress(70000), u"http://localhost:65535/overlay"_s);
    EXPECT_EQ(overlayAddress(80), u"http://localhost:80/overlay"_s);
}

TEST_F(SettingsWindowTest, aPortIsStoredWhenItIsComplete) {
    auto* port = control<QSpinBox>(u"Browser Overlay (OBS): Port"_s);
    typeInto(*port, u"90"_s);
    EXPECT_EQ(settings.obsOverlayPort.get(), 8077);
    window->close();
    EXPECT_EQ(settings.obsOverlayPort.get(), 90);
}

TEST_F(SettingsWindowTest, noPortBeyondTheRangeCanBeTyped) {
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

TEST_F(SettingsWindowTest, aPortOutOfRangeInTheStoreIsNotChangedByLooking) {
    settings.vrchatPort.set(70000);
    open();
    EXPECT_EQ(control<QSpinBox>(u"VRChat Chatbox (OSC): Port"_s)->value(), 65535);
    window->close();
    EXPECT_EQ(settings.vrchatPort.get(), 70000);
}

TEST_F(SettingsWindowTest, theMouseWheelChangesNothing) {
    for (const QString& name : {u"Opacity"_s, u"vMix: Port"_s, u"VRChat Chatbox (OSC): Send"_s,
                                u"Interface Language"_s, u"Current Model"_s}) {
        auto* field = control(name);
        const QString before = shownBy(*field);
        QWheelEvent turn({5, 5}, field->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(field, &turn);
        EXPECT_EQ(shownBy(*field), before) << qPrintable(name);
        EXPECT_FALSE(turn.isAccepted()) << qPrintable(name); // The page scrolls instead.
    }
}

TEST_F(SettingsWindowTest, blanksRoundAddressesAndKeysAreNotStored) {
    typeInto(*control(u"vMix: Host"_s), u" studio "_s);
    EXPECT_EQ(settings.vmixHost.get(), u"studio"_s);
    typeInto(*control(u"Deepgram: API Key"_s), u" abc "_s);
    EXPECT_EQ(store.string(u"deepgramApiKey"_s), u"abc"_s);
}

TEST_F(SettingsWindowTest, titleFieldsOfVMixMayBeEmptyAndKeepTheirBlanks) {
    typeInto(*control(u"vMix: Original field"_s), u""_s);
    EXPECT_EQ(store.string(u"vmixFieldOriginal"_s), u""_s);
    typeInto(*control(u"vMix: Translation field"_s), u"Line 1 "_s);
    EXPECT_EQ(store.string(u"vmixFieldTranslation"_s), u"Line 1 "_s);
}

TEST_F(SettingsWindowTest, everyOtherSendModeIsShownAsBothAndKept) {
    settings.vrchatSendMode.set(7);
    EXPECT_EQ(shownBy(*control(u"VRChat Chatbox (OSC): Send"_s)), u"2"_s);
    EXPECT_EQ(settings.vrchatSendMode.get(), 7);
}

TEST_F(SettingsWindowTest, theVRChatTestIsSentWhetherEnabledOrNot) {
    press(text(u"settings.vrc.test"_s));
    EXPECT_EQ(vrchatTests, 1);
    settings.vrchatEnabled.set(true);
    press(text(u"settings.vrc.test"_s));
    EXPECT_EQ(vrchatTests, 2);
}

TEST_F(SettingsWindowTest, theSubtitlesAreToldOfANewAppearance) {
    press(text(u"settings.overlay.border"_s));
    EXPECT_EQ(appearanceChanges, 1);
    changeAsAPerson(*control(u"Text Color (#RRGGBB)"_s));
    EXPECT_EQ(store.string(u"overlayTextColor"_s), u"#123ABC"_s);
    EXPECT_EQ(appearanceChanges, 2);
    press(text(u"settings.backend.autostart"_s));
    EXPECT_EQ(appearanceChanges, 2);
    EXPECT_EQ(autoStopChanges, 0);
    press(text(u"settings.backend.autostop"_s));
    EXPECT_EQ(autoStopChanges, 1);
}

TEST_F(SettingsWindowTest, thePreviewShowsTheAppearanceAtOnce) {
    auto* preview = control(text(u"settings.overlay.preview"_s));
    ASSERT_NE(preview, nullptr);
    const auto picture = [preview] { return preview->grab().toImage(); };
    const QImage before = picture();
    for (const QString& name :
         {u"Background Color (#RRGGBB)"_s, u"Text Color (#RRGGBB)"_s, u"Border Color (#RRGGBB)"_s,
          u"Opacity"_s, u"Show Border"_s, u"Show Original Text"_s}) {
        const QImage last = picture();
        changeAsAPerson(*control(name));
        EXPECT_NE(picture(), last) << qPrintable(name);
    }
    EXPECT_EQ(picture().size(), before.size());
}

TEST_F(SettingsWindowTest, whatIsNoColourIsNotStored) {
    auto* hex = control<QLineEdit>(u"Background Color (#RRGGBB)"_s);
    typeInto(*hex, u"#12345"_s);
    EXPECT_FALSE(store.contains(u"overlayBgColor"_s));
    QFocusEvent leaving(QEvent::FocusOut);
    QCoreApplication::sendEvent(hex, &leaving);
    EXPECT_EQ(hex->text(), u"#90EE90"_s);
    typeInto(*hex, u"abcdef"_s);
    EXPECT_EQ(store.string(u"overlayBgColor"_s), u"#ABCDEF"_s);
}

TEST_F(SettingsWindowTest, aColourIsChosenFromThePalette) {
    press(u"Border Color"_s);
    auto* palette = QApplication::activePopupWidget();
    ASSERT_NE(palette, nullptr);
    auto* white = controlIn<QToolButton>(*palette, u"#FFFFFF"_s);
    ASSERT_NE(white, nullptr);
    white->click();
    EXPECT_EQ(store.string(u"overlayBorderColor"_s), u"#FFFFFF"_s);
    EXPECT_EQ(shownBy(*control(u"Border Color (#RRGGBB)"_s)), u"#FFFFFF"_s);
    drainEvents();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(SettingsWindowTest, aColourThatIsNoneInTheStoreIsShownAsTheDefault) {
    store.setString(u"overlayBgColor"_s, u"green"_s);
    open();
    EXPECT_EQ(shownBy(*control(u"Background Color (#RRGGBB)"_s)), u"#90EE90"_s);
    EXPECT_EQ(store.string(u"overlayBgColor"_s), u"green"_s);
}

// Engines.

TEST_F(SettingsWindowTest, theChosenEngineIsExplainedAndAskedForWhatItNeeds) {
    showTab(1);
    for (const EngineOption& option : engineOptions()) {
        settings.sttEngine.set(option.id);
        EXPECT_TRUE(shows(engineInfoText(option.id))) << qPrintable(option.id);
        const auto isAsked = [this](const QString& name) { return control(name)->isVisible(); };
        EXPECT_EQ(isAsked(u"Deepgram: API Key"_s), option.id == u"deepgram");
        EXPECT_EQ(isAsked(u"AssemblyAI: API Key"_s), option.id == u"assemblyai");
        EXPECT_EQ(isAsked(u"Google Cloud (REST): API Key"_s), option.id == u"google_rest");
        EXPECT_EQ(isAsked(u"Google Cloud (gRPC streaming): Location"_s),
                  option.id == u"google_grpc");
        EXPECT_EQ(isAsked(u"Microsoft Azure: Region"_s), option.id == u"azure");
        EXPECT_EQ(isAsked(u"Vosk: Port"_s), option.id == u"vosk");
    }
}

TEST_F(SettingsWindowTest, theExplanationStaysGermanInEveryLanguage) {
    showTab(1);
    for (const UILanguage language : UILanguage::allCases()) {
        l10n.setCurrent(language);
        EXPECT_TRUE(shows(engineInfoText(u"whisper"_s)));
    }
}

TEST_F(SettingsWindowTest, anUnknownEngineIsNotReplacedByLooking) {
    settings.sttEngine.set(u"later"_s);
    open();
    EXPECT_EQ(settings.sttEngine.get(), u"later"_s);
    EXPECT_EQ(shownBy(*control(u"Speech Recognition Engine"_s)), u"empty"_s);
}

TEST_F(SettingsWindowTest, keysAreDotsUntilTheyAreRevealed) {
    showTab(1);
    settings.sttEngine.set(u"azure"_s);
    auto* key = control<QLineEdit>(u"Microsoft Azure: API Key"_s);
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
    press(u"Microsoft Azure: Show API Key"_s);
    EXPECT_EQ(key->echoMode(), QLineEdit::Normal);
    window->close();
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
}

TEST_F(SettingsWindowTest, googlesKeyIsOneSettingWhereverItIsAsked) {
    typeInto(*control(u"AssemblyAI: Google Translate: API Key"_s), u"abc"_s);
    EXPECT_EQ(settings.googleApiKey.get(), u"abc"_s);
    for (const QString& name :
         {u"Deepgram: Google Translate: API Key"_s, u"Google Cloud (REST): API Key"_s,
          u"Google Cloud (gRPC streaming): Google Translate: API Key"_s}) {
        EXPECT_EQ(shownBy(*control(name)), u"abc"_s);
    }
}

TEST_F(SettingsWindowTest, aRegionThatIsNotInTheListStaysChosen) {
    settings.azureRegion.set(u"moonbase1"_s);
    EXPECT_EQ(shownBy(*control(u"Microsoft Azure: Region"_s)), u"moonbase1"_s);
    settings.azureRegion.set(u"westeurope"_s);
    EXPECT_EQ(shownBy(*control(u"Microsoft Azure: Region"_s)), u"westeurope"_s);
}

// Whisper.

TEST_F(SettingsWindowTest, modelsOnTheDiskCanBeRemovedAndTheOthersFetched) {
    EXPECT_TRUE(QDir().mkpath(paths.whisperCache()));
    QFile model(paths.whisperCache() + u"/large-v3.pt");
    ASSERT_TRUE(model.open(QIODevice::WriteOnly));
    open();
    showTab(2);
    EXPECT_TRUE(waitUntil([this] { return control(u"Large: Delete"_s) != nullptr; }));
    EXPECT_NE(control(u"Base: Download"_s), nullptr);
    EXPECT_TRUE(shows(text(u"settings.whisper.downloaded"_s)));
    press(u"Large: Delete"_s);
    EXPECT_TRUE(waitUntil([this] { return control(u"Large: Download"_s) != nullptr; }));
    EXPECT_FALSE(model.exists());
}

TEST_F(SettingsWindowTest, aRunningDownloadIsVisibleAndAFailedOneIsSaid) {
    EXPECT_TRUE(QDir().mkpath(paths.supportFolder() + u"/venv/bin"));
    QFile interpreter(paths.backendInterpreter());
    ASSERT_TRUE(interpreter.open(QIODevice::WriteOnly));
    interpreter.write("#!/bin/sh\nwhile [ ! -e '" + home.path().toUtf8() +
                      "/go' ]; do :; done\necho out of luck; exit 1\n");
    interpreter.close();
    interpreter.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    showTab(2);
    press(u"Tiny: Download"_s);
    EXPECT_TRUE(shows(text(u"settings.whisper.downloading"_s)));
    EXPECT_FALSE(control(u"Tiny: Download"_s)->isEnabled());
    QFile go(home.filePath(u"go"_s));
    ASSERT_TRUE(go.open(QIODevice::WriteOnly));
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
    EXPECT_EQ(dialogs.alerts[0].title, text(u"settings.whisper.failed"_s));
    EXPECT_EQ(dialogs.alerts[0].message, u"tiny: out of luck"_s);
    EXPECT_TRUE(control(u"Tiny: Download"_s)->isEnabled());
    EXPECT_FALSE(shows(text(u"settings.whisper.downloading"_s)));
}

TEST_F(SettingsWindowTest, aModelThatIsNotInTheListStaysChosen) {
    settings.whisperModel.set(u"turbo"_s);
    EXPECT_EQ(shownBy(*control(u"Current Model"_s)), u"turbo"_s);
}

// Languages.

TEST_F(SettingsWindowTest, allLanguagesAreThereWithFlagAndOwnName) {
    showTab(3);
    auto* grid = control<QListView>(text(u"settings.lang.supported"_s));
    ASSERT_NE(grid, nullptr);
    const QAbstractItemModel& model = *grid->model();
    EXPECT_TRUE(shows(u"101 languages"_s)); // However many have been drawn so far.
    ASSERT_TRUE(waitUntil([&model] { return model.rowCount() == 101; }));
    for (int row = 0; row < model.rowCount(); ++row) {
        const Language& language = LanguageManager::allLanguages()[row];
        const QModelIndex shown = model.index(row, 0);
        EXPECT_EQ(shown.data().toString(), language.name);
        EXPECT_TRUE(shown.data(Qt::ToolTipRole).toString().startsWith(language.flag));
        EXPECT_FALSE(shown.data(Qt::DecorationRole).value<QIcon>().isNull());
    }
}

TEST_F(SettingsWindowTest, theGridIsFilteredByTyping) {
    showTab(3);
    auto* grid = control<QListView>(text(u"settings.lang.supported"_s));
    auto* search = control<QLineEdit>(text(u"settings.lang.search"_s));
    ASSERT_TRUE(waitUntil([grid] { return grid->model()->rowCount() == 101; }));
    typeInto(*search, u"deu"_s);
    ASSERT_EQ(grid->model()->rowCount(), 1);
    EXPECT_TRUE(shows(u"1 / 101 languages"_s));
    typeInto(*search, u"qqq"_s);
    EXPECT_EQ(grid->model()->rowCount(), 0);
    typeInto(*search, u""_s);
    EXPECT_EQ(grid->model()->rowCount(), 101);
}

// Storage.

TEST_F(SettingsWindowTest, foldersAreOpened) {
    press(u"Backend Folder: Open"_s);
    press(u"Transcripts: Open"_s);
    EXPECT_TRUE(waitUntil([this] { return opener.opened.size() == 2; }));
    EXPECT_EQ(opener.opened, (QStringList{paths.supportFolder(), paths.outputFolder()}));
}

TEST_F(SettingsWindowTest, theLogIsClearedAfterAQuestion) {
    EXPECT_TRUE(QDir().mkpath(paths.supportFolder()));
    QFile backendLog(paths.backendLog());
    ASSERT_TRUE(backendLog.open(QIODevice::WriteOnly));
    press(u"Clear Logs: Delete"_s);
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"Clear Cache?"_s);
    EXPECT_TRUE(backendLog.exists());
    dialogs.answer(0);
    EXPECT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
    EXPECT_FALSE(backendLog.exists());
    EXPECT_EQ(dialogs.alerts[1].message, u"Logs have been removed."_s);
}

// Info.

TEST_F(SettingsWindowTest, tellsTheVersionAndWhoWorks) {
    showTab(5);
    EXPECT_TRUE(shows(u"4.2"_s));
    EXPECT_TRUE(shows(u"Whisper (local)"_s));
    EXPECT_TRUE(shows(u"Mistral"_s));
    settings.sttEngine.set(u"azure"_s);
    EXPECT_TRUE(shows(u"Microsoft Azure"_s));
    EXPECT_TRUE(shows(u"Azure Speech"_s));
}

TEST_F(SettingsWindowTest, anUpdateCheckShowsThatItRunsAndThatNothingIsNewer) {
    showTab(5);
    auto* button = control<QAbstractButton>(text(u"info.update.check"_s));
    button->click();
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(updates.checks, 1);
    updates.pending(UpdateControl::Outcome::UpToDate);
    EXPECT_TRUE(button->isEnabled());
    EXPECT_TRUE(shows(text(u"info.update.uptodate"_s)));
    EXPECT_FALSE(control(text(u"info.update.download"_s))->isVisible());
}

TEST_F(SettingsWindowTest, aNewerReleaseCanBeDownloaded) {
    showTab(5);
    press(text(u"info.update.check"_s));
    updates.available = u"4.3"_s;
    updates.pending(UpdateControl::Outcome::Available);
    EXPECT_TRUE(shows(u"A new version is available. (v4.3)"_s));
    EXPECT_TRUE(control(text(u"info.update.download"_s))->isVisible());
    press(text(u"info.update.download"_s));
    EXPECT_EQ(updates.downloads, 1);
}

TEST_F(SettingsWindowTest, aReleaseThatWasFoundBeforeIsShownWithoutACheck) {
    window->close();
    updates.available = u"5.0"_s;
    window->show();
    showTab(5);
    EXPECT_TRUE(shows(u"A new version is available. (v5.0)"_s));
    EXPECT_EQ(updates.checks, 0);
}

TEST_F(SettingsWindowTest, aFailedUpdateCheckIsSaid) {
    showTab(5);
    press(text(u"info.update.check"_s));
    updates.pending(UpdateControl::Outcome::Failed);
    EXPECT_TRUE(shows(text(u"info.update.failed"_s)));
    press(text(u"info.update.check"_s));
    EXPECT_FALSE(shows(text(u"info.update.failed"_s)));
}

TEST_F(SettingsWindowTest, anAnswerAfterTheEndIsDropped) {
    press(text(u"info.update.check"_s));
    window.reset();
    updates.pending(UpdateControl::Outcome::UpToDate);
    drainEvents();
}

} // namespace

} // namespace orv::test
