// The tabs of models, languages, storage and information.

#include "ControlProbe.h"
#include "LanguageManager.h"
#include "SettingsWindowFixture.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QLineEdit>
#include <QListView>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

using OtherTabsTest = SettingsWindowFixture;

// Whisper.

TEST_F(OtherTabsTest, modelsOnTheDiskCanBeRemovedAndTheOthersFetched) {
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

TEST_F(OtherTabsTest, aRunningDownloadIsVisibleAndAFailedOneIsSaid) {
    placeDownload({});
    showTab(2);
    ASSERT_TRUE(isOffered(u"Tiny: Download"_s));
    press(u"Tiny: Download"_s);
    EXPECT_TRUE(shows(text(u"settings.whisper.downloading"_s)));
    EXPECT_FALSE(control(u"Tiny: Download"_s)->isEnabled());
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
    EXPECT_EQ(dialogs.alerts[0].title, text(u"settings.whisper.failed"_s));
    EXPECT_EQ(dialogs.alerts[0].message, u"tiny: out of luck"_s);
    EXPECT_TRUE(control(u"Tiny: Download"_s)->isEnabled());
    EXPECT_FALSE(shows(text(u"settings.whisper.downloading"_s)));
    const QLabel* failed = label(text(u"settings.whisper.failed.short"_s));
    ASSERT_NE(failed, nullptr);
    EXPECT_EQ(failed->toolTip(), u"out of luck"_s);
    EXPECT_EQ(failed->accessibleDescription(), u"out of luck"_s);
    l10n.setCurrent(UILanguage::Italian);
    EXPECT_EQ(failed->text(), u"Non riuscito"_s);
    // Another attempt takes the place of the failure.
    press(u"Tiny: Scarica"_s);
    EXPECT_NE(failed->text(), u"Non riuscito"_s);
    EXPECT_EQ(failed->toolTip(), QString());
    EXPECT_TRUE(waitUntil([this] { return dialogs.alerts.size() == 2; }));
}

TEST_F(OtherTabsTest, aDownloadsPercentageIsShownAsInTheInterfacesLanguage) {
    placeDownload("progress 7\\nprogress 42\\n");
    showTab(2);
    ASSERT_TRUE(isOffered(u"Tiny: Download"_s));
    press(u"Tiny: Download"_s);
    EXPECT_TRUE(waitUntil([this] { return shows(u"Downloading: 42%"_s); }));
    l10n.setCurrent(UILanguage::French);
    EXPECT_TRUE(shows(u"Téléchargement\u00A0: 42\u00A0%"_s));
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
}

TEST_F(OtherTabsTest, whatHasArrivedIsSaidToBeChecked) {
    placeDownload("progress 100\\n");
    showTab(2);
    ASSERT_TRUE(isOffered(u"Tiny: Download"_s));
    press(u"Tiny: Download"_s);
    EXPECT_TRUE(waitUntil([this] { return shows(text(u"settings.whisper.checking"_s)); }));
    EXPECT_FALSE(control(u"Tiny: Download"_s)->isEnabled());
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
}

TEST_F(OtherTabsTest, aDownloadGoesOnWhenTheWindowIsMadeAnew) {
    placeDownload("progress 42\\n");
    showTab(2);
    ASSERT_TRUE(isOffered(u"Tiny: Download"_s));
    press(u"Tiny: Download"_s);
    open();
    showTab(2);
    EXPECT_TRUE(waitUntil([this] { return shows(u"Downloading: 42%"_s); }));
    EXPECT_TRUE(models->isDownloading());
}

TEST_F(OtherTabsTest, sizesAreWrittenAsInTheInterfacesLanguage) {
    showTab(2);
    EXPECT_TRUE(shows(u"1.5\u00A0GB"_s));
    l10n.setCurrent(UILanguage::French);
    EXPECT_TRUE(shows(u"1,5\u00A0Go"_s));
    EXPECT_TRUE(shows(u"75\u00A0Mo"_s));
}

TEST_F(OtherTabsTest, aModelThatIsNotInTheListStaysChosen) {
    settings.whisperModel.set(u"turbo"_s);
    EXPECT_EQ(shownByControl(*control(u"Current Model"_s)), u"turbo"_s);
}

// Languages.

TEST_F(OtherTabsTest, allLanguagesAreThereWithFlagAndOwnName) {
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

TEST_F(OtherTabsTest, theGridIsFilteredByTyping) {
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

TEST_F(OtherTabsTest, foldersAreOpened) {
    press(u"Backend Folder: Open"_s);
    press(u"Transcripts: Open"_s);
    EXPECT_TRUE(waitUntil([this] { return opener.opened.size() == 2; }));
    EXPECT_EQ(opener.opened, (QStringList{paths.supportFolder(), paths.outputFolder()}));
}

TEST_F(OtherTabsTest, theLogIsClearedAfterAQuestion) {
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

TEST_F(OtherTabsTest, tellsTheVersionAndWhoWorks) {
    showTab(5);
    EXPECT_TRUE(shows(u"4.2"_s));
    EXPECT_TRUE(shows(u"Whisper (local)"_s));
    EXPECT_TRUE(shows(u"Mistral"_s));
    settings.sttEngine.set(u"azure"_s);
    EXPECT_TRUE(shows(u"Microsoft Azure"_s));
    EXPECT_TRUE(shows(u"Azure Speech"_s));
}

TEST_F(OtherTabsTest, anUpdateCheckShowsThatItRunsAndThatNothingIsNewer) {
    showTab(5);
    auto* button = control<QAbstractButton>(text(u"info.update.check"_s));
    button->click();
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(updates.checks, 1);
    updates.pending(UpdateOutcome::UpToDate);
    EXPECT_TRUE(button->isEnabled());
    EXPECT_TRUE(shows(text(u"info.update.uptodate"_s)));
    EXPECT_FALSE(control(text(u"info.update.download"_s))->isVisible());
}

TEST_F(OtherTabsTest, aNewerReleaseCanBeDownloaded) {
    showTab(5);
    press(text(u"info.update.check"_s));
    updates.available = u"4.3"_s;
    updates.pending(UpdateOutcome::Available);
    EXPECT_TRUE(shows(u"A new version is available (v4.3)."_s));
    EXPECT_TRUE(control(text(u"info.update.download"_s))->isVisible());
    press(text(u"info.update.download"_s));
    EXPECT_EQ(updates.downloads, 1);
}

TEST_F(OtherTabsTest, aReleaseThatWasFoundBeforeIsShownWithoutACheck) {
    updates.available = u"5.0"_s;
    open();
    showTab(5);
    EXPECT_TRUE(shows(u"A new version is available (v5.0)."_s));
    EXPECT_EQ(updates.checks, 0);
}

TEST_F(OtherTabsTest, aReleaseThatIsFoundMeanwhileIsShownAtOnce) {
    showTab(5);
    updates.find(u"5.0"_s);
    EXPECT_TRUE(shows(u"A new version is available (v5.0)."_s));
    EXPECT_TRUE(control(text(u"info.update.download"_s))->isVisible());
    updates.find(u"5.1"_s);
    EXPECT_TRUE(shows(u"A new version is available (v5.1)."_s));
    EXPECT_EQ(updates.checks, 0);
}

TEST_F(OtherTabsTest, aFailedUpdateCheckIsSaid) {
    showTab(5);
    press(text(u"info.update.check"_s));
    updates.pending(UpdateOutcome::Failed);
    EXPECT_TRUE(shows(text(u"info.update.failed"_s)));
    press(text(u"info.update.check"_s));
    EXPECT_FALSE(shows(text(u"info.update.failed"_s)));
}

TEST_F(OtherTabsTest, anAnswerAfterTheEndIsDropped) {
    press(text(u"info.update.check"_s));
    window.reset();
    updates.pending(UpdateOutcome::UpToDate);
    drainEvents();
}

} // namespace

} // namespace orv::test
