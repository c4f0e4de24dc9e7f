// The manager with real programs in the interpreter's place, of a speech server that has no script
// for downloads.

#include "WhisperFixture.h"

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

using WhisperModelManagerTest = WhisperFixture;

TEST_F(WhisperModelManagerTest, showsWhatIsInTheCache) {
    place(u"large-v3.pt"_s);
    EXPECT_EQ(manager->state(u"large"_s), State::Absent);
    manager->refreshDownloadedModels();
    EXPECT_TRUE(reaches(u"large"_s, State::Downloaded));
    EXPECT_EQ(manager->state(u"base"_s), State::Absent);
    EXPECT_EQ(changes, 1);
}

TEST_F(WhisperModelManagerTest, aFolderThatIsNotThereHoldsNoModels) {
    EXPECT_TRUE(QDir(cache).removeRecursively());
    look();
    EXPECT_EQ(manager->state(u"base"_s), State::Absent);
    EXPECT_EQ(changes, 0);
}

TEST_F(WhisperModelManagerTest, downloadsByTheBackendsInterpreter) {
    installInterpreter("printf '%s|' \"$@\" > arguments; touch base.pt");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
    EXPECT_EQ(contentOf(u"arguments"_s), "-c|import whisper; whisper.load_model('base')|");
    EXPECT_TRUE(dialogs.alerts.isEmpty());
    EXPECT_TRUE(log.contains(u"✓ Whisper-Modell geladen: base"_s));
}

TEST_F(WhisperModelManagerTest, aHalfDownloadedFileIsStillDownloading) {
    installInterpreter("touch base.pt; while [ ! -e go ]; do :; done");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(waitUntil([this] { return isThere(u"base.pt"_s); }));
    look();
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    manager->deleteWhisperModel(u"base"_s); // Not while it is being written.
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    place(u"go"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
}

TEST_F(WhisperModelManagerTest, eachModelIsFetchedOnceAndSeveralAtTheSameTime) {
    installInterpreter("echo x >> \"$$.started\"; while [ ! -e go ]; do :; done");
    manager->downloadWhisperModel(u"tiny"_s);
    manager->downloadWhisperModel(u"tiny"_s);
    manager->downloadWhisperModel(u"base"_s);
    const auto started = [this] { return QDir(cache).entryList({u"*.started"_s}).size(); };
    EXPECT_TRUE(waitUntil([&] { return started() == 2; }));
    EXPECT_EQ(manager->state(u"tiny"_s), State::Downloading);
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    place(u"go"_s);
    EXPECT_TRUE(reaches(u"tiny"_s, State::Absent));
    EXPECT_TRUE(reaches(u"base"_s, State::Absent));
    EXPECT_EQ(started(), 2);
}

TEST_F(WhisperModelManagerTest, aFailedDownloadShowsWhatItSaidLast) {
    installInterpreter("echo Traceback >&2; echo \"No module named 'whisper'\" >&2; exit 1");
    manager->downloadWhisperModel(u"small"_s);
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
    EXPECT_EQ(manager->state(u"small"_s), State::Failed);
    EXPECT_EQ(manager->failure(u"small"_s), u"No module named 'whisper'"_s);
    EXPECT_EQ(dialogs.alerts[0].style, AlertStyle::Warning);
    EXPECT_EQ(dialogs.alerts[0].title, u"<settings.whisper.failed>"_s);
    EXPECT_EQ(dialogs.alerts[0].message, u"small: No module named 'whisper'"_s);
    EXPECT_EQ(dialogs.alerts[0].buttons, QStringList(u"<alert.ok>"_s));
    EXPECT_TRUE(log.contains(u"❌ Whisper-Modell small: No module named 'whisper'"_s));
}

TEST_F(WhisperModelManagerTest, aDownloadThatFailsInSilenceShowsItsStatus) {
    installInterpreter("exit 7");
    manager->downloadWhisperModel(u"small"_s);
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
    EXPECT_TRUE(dialogs.alerts[0].message.endsWith(u"python3 → 7"_s));
}

TEST_F(WhisperModelManagerTest, aMissingInterpreterIsSaidAtOnce) {
    manager->downloadWhisperModel(u"base"_s);
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_TRUE(dialogs.alerts[0].message.startsWith(u"<engine.notinstalled>"_s));
    EXPECT_TRUE(dialogs.alerts[0].message.contains(interpreter));
    EXPECT_EQ(manager->state(u"base"_s), State::Failed);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(manager->isDownloading());
}

TEST_F(WhisperModelManagerTest, whatIsNoModelIsNeitherFetchedNorRemoved) {
    installInterpreter("touch ran");
    place(u"other.pt"_s);
    manager->downloadWhisperModel(u"'); import os; ('"_s);
    EXPECT_EQ(changes, 0);
    manager->deleteWhisperModel(u"other"_s);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(isThere(u"other.pt"_s));
    EXPECT_FALSE(isThere(u"ran"_s));
}

TEST_F(WhisperModelManagerTest, removesAModel) {
    place(u"base.pt"_s);
    place(u"tiny.pt"_s);
    manager->refreshDownloadedModels();
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
    manager->deleteWhisperModel(u"base"_s);
    EXPECT_EQ(manager->state(u"base"_s), State::Removing);
    EXPECT_TRUE(reaches(u"base"_s, State::Absent));
    EXPECT_FALSE(isThere(u"base.pt"_s));
    EXPECT_TRUE(isThere(u"tiny.pt"_s));
}

TEST_F(WhisperModelManagerTest, removesEveryVersionOfLarge) {
    for (const QString& name :
         {u"large.pt"_s, u"large-v1.pt"_s, u"large-v2.pt"_s, u"large-v3.pt"_s}) {
        place(name);
    }
    manager->refreshDownloadedModels();
    EXPECT_TRUE(reaches(u"large"_s, State::Downloaded));
    manager->deleteWhisperModel(u"large"_s);
    EXPECT_TRUE(reaches(u"large"_s, State::Absent));
    EXPECT_TRUE(QDir(cache).isEmpty());
}

TEST_F(WhisperModelManagerTest, aModelThatCannotBeRemovedStaysAndIsSaid) {
    // A folder of that name cannot be deleted as a file, whoever runs the tests.
    EXPECT_TRUE(QDir().mkpath(cache + u"/base.pt/inside"));
    manager->deleteWhisperModel(u"base"_s);
    EXPECT_TRUE(waitUntil([this] { return !dialogs.alerts.isEmpty(); }));
    EXPECT_EQ(dialogs.alerts[0].title, u"<alert.failed.title>"_s);
    EXPECT_TRUE(dialogs.alerts[0].message.contains(u"base.pt"_s));
    EXPECT_TRUE(isThere(u"base.pt/inside"_s));
}

TEST_F(WhisperModelManagerTest, answersFromTheDiskAfterTheEndAreDropped) {
    place(u"base.pt"_s);
    manager->refreshDownloadedModels();
    manager->deleteWhisperModel(u"base"_s);
    manager.reset();
    bool done = false;
    files.run([] { return 0; }, [&](int) { done = true; });
    EXPECT_TRUE(waitUntil([&] { return done; }));
    EXPECT_FALSE(isThere(u"base.pt"_s));
}

} // namespace

} // namespace orv::test
