#include "SettingsActions.h"

#include "DefaultsStore.h"
#include "FileJobs.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "SettingsFakes.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class SettingsActionsTest : public ::testing::Test {
  protected:
    SettingsActionsTest() { EXPECT_TRUE(QDir().mkpath(support + u"/output")); }

    void placeLog(const QString& name = u"/backend.log"_s) const {
        QFile file(support + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    bool logIsThere() const { return QFile::exists(support + u"/backend.log"); }

    /// Until everything asked of the disk so far has been answered.
    void settle() {
        bool done = false;
        files.run([] { return 0; }, [&](int) { done = true; });
        EXPECT_TRUE(waitUntil([&] { return done; }));
    }

    LogCapture log;
    QTemporaryDir home;
    const QString support = home.filePath(u"Library/Application Support/Orvane"_s);
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, home.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    AnsweredDialogs dialogs;
    FakeChooser chooser;
    FakeOpener opener;
    FileJobs files{disk};
    std::unique_ptr<SettingsActions> actions = std::make_unique<SettingsActions>(
        ActionsEnvironment{.settings = settings,
                           .files = files,
                           .dialogs = dialogs,
                           .chooser = chooser,
                           .opener = opener,
                           .text = bracketed,
                           .supportFolder = support,
                           .outputFolder = support + u"/output",
                           .backendLog = support + u"/backend.log",
                           .earlierLog = support + u"/backend.log.1"});
};

TEST_F(SettingsActionsTest, theServiceAccountIsAJsonFile) {
    actions->pickServiceAccountJSON();
    ASSERT_EQ(chooser.choices.size(), 1);
    EXPECT_EQ(chooser.choices[0].title, u"<settings.engine.choose_file>"_s);
    EXPECT_EQ(chooser.choices[0].suffix, u"json"_s);
}

TEST_F(SettingsActionsTest, theChosenFilesPathIsStored) {
    actions->pickServiceAccountJSON();
    EXPECT_TRUE(settings.googleServiceAccountPath.get().isEmpty());
    chooser.pending(u"/home/mia/my account.json"_s);
    EXPECT_EQ(settings.googleServiceAccountPath.get(), u"/home/mia/my account.json"_s);
    EXPECT_EQ(store.string(u"googleServiceAccountPath"_s), u"/home/mia/my account.json"_s);
}

TEST_F(SettingsActionsTest, aFileCanBeChosenAnew) {
    settings.googleServiceAccountPath.set(u"/a/b.json"_s);
    actions->pickServiceAccountJSON();
    EXPECT_EQ(chooser.choices[0].startsWith, u"/a/b.json"_s);
    EXPECT_EQ(settings.googleServiceAccountPath.get(), u"/a/b.json"_s); // Cancelled so far.
}

TEST_F(SettingsActionsTest, theServiceAccountCanBeCleared) {
    settings.googleServiceAccountPath.set(u"/a/b.json"_s);
    actions->clearServiceAccount();
    EXPECT_EQ(store.string(u"googleServiceAccountPath"_s), u""_s);
}

TEST_F(SettingsActionsTest, theProgramsFolderIsRevealed) {
    actions->openSupportDirectory();
    EXPECT_TRUE(opener.opened.isEmpty());
    settle();
    EXPECT_EQ(opener.opened, QStringList(support));
}

TEST_F(SettingsActionsTest, theTranscriptsFolderIsMadeFirst) {
    EXPECT_TRUE(QDir(home.filePath(u"Library"_s)).removeRecursively());
    actions->openOutputDirectory();
    settle();
    EXPECT_TRUE(QDir(support + u"/output").exists());
    EXPECT_EQ(opener.opened, QStringList(support + u"/output"));
}

TEST_F(SettingsActionsTest, aFolderThatCannotBeMadeIsSaid) {
    EXPECT_TRUE(QDir(home.filePath(u"Library"_s)).removeRecursively());
    QFile inTheWay(home.filePath(u"Library"_s));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    actions->openOutputDirectory();
    settle();
    EXPECT_TRUE(opener.opened.isEmpty());
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.failed.title>"_s);
}

TEST_F(SettingsActionsTest, clearingTheCacheAsksFirst) {
    placeLog();
    actions->clearCache();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].style, AlertStyle::Warning);
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.cache.title>"_s);
    EXPECT_EQ(dialogs.alerts[0].message, u"<alert.cache.msg>"_s);
    EXPECT_EQ(dialogs.alerts[0].buttons,
              (QStringList{u"<alert.cache.delete>"_s, u"<alert.cache.cancel>"_s}));
    settle();
    EXPECT_TRUE(logIsThere());
}

TEST_F(SettingsActionsTest, cancellingDeletesNothing) {
    placeLog();
    actions->clearCache();
    dialogs.answer(1);
    settle();
    EXPECT_TRUE(logIsThere());
    EXPECT_EQ(dialogs.alerts.size(), 1);
}

TEST_F(SettingsActionsTest, theLogIsDeletedAndNothingElse) {
    placeLog();
    QFile transcript(support + u"/output/a.txt");
    ASSERT_TRUE(transcript.open(QIODevice::WriteOnly));
    actions->clearCache();
    dialogs.answer(0);
    settle();
    EXPECT_FALSE(logIsThere());
    EXPECT_TRUE(transcript.exists());
    ASSERT_EQ(dialogs.alerts.size(), 2);
    EXPECT_EQ(dialogs.alerts[1].style, AlertStyle::Informational);
    EXPECT_EQ(dialogs.alerts[1].title, u"<alert.cache.done.title>"_s);
    EXPECT_EQ(dialogs.alerts[1].message, u"<alert.cache.done.msg>"_s);
    EXPECT_EQ(dialogs.alerts[1].buttons, QStringList(u"<alert.ok>"_s));
}

TEST_F(SettingsActionsTest, theEarlierLogIsDeletedAsWell) {
    placeLog();
    placeLog(u"/backend.log.1"_s);
    actions->clearCache();
    dialogs.answer(0);
    settle();
    EXPECT_EQ(QDir(support).entryList(QDir::Files), QStringList());
}

TEST_F(SettingsActionsTest, aLinkInTheLogsPlaceIsDeletedAndNotWhatItLeadsTo) {
    placeLog(u"/mine"_s);
    ASSERT_TRUE(QFile::link(support + u"/mine", support + u"/backend.log"));
    ASSERT_TRUE(QFile::link(support + u"/nowhere", support + u"/backend.log.1"));
    actions->clearCache();
    dialogs.answer(0);
    settle();
    EXPECT_EQ(QDir(support).entryList(QDir::Files | QDir::System), QStringList(u"mine"_s));
}

TEST_F(SettingsActionsTest, withoutALogThereIsNothingToDelete) {
    actions->clearCache();
    dialogs.answer(0);
    settle();
    ASSERT_EQ(dialogs.alerts.size(), 2);
    EXPECT_EQ(dialogs.alerts[1].title, u"<alert.cache.done.title>"_s);
}

TEST_F(SettingsActionsTest, aLogThatCannotBeDeletedIsNotCalledDeleted) {
    EXPECT_TRUE(QDir().mkpath(support + u"/backend.log/inside"));
    actions->clearCache();
    dialogs.answer(0);
    settle();
    ASSERT_EQ(dialogs.alerts.size(), 2);
    EXPECT_EQ(dialogs.alerts[1].title, u"<alert.failed.title>"_s);
    EXPECT_TRUE(logIsThere());
}

TEST_F(SettingsActionsTest, answersAfterTheEndAreDropped) {
    placeLog();
    actions->openSupportDirectory();
    actions->clearCache();
    actions->pickServiceAccountJSON();
    actions.reset();
    dialogs.answer(0);
    chooser.pending(u"/late.json"_s);
    settle();
    EXPECT_TRUE(logIsThere());
    EXPECT_TRUE(opener.opened.isEmpty());
    EXPECT_TRUE(settings.googleServiceAccountPath.get().isEmpty());
}

} // namespace

} // namespace orv::test
