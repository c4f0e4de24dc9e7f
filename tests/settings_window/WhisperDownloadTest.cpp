// Downloads by the speech server's script and then the library, with a shell script for both.

#include "WhisperFixture.h"
#include "WhisperModels.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class WhisperDownloadTest : public WhisperFixture {
  protected:
    WhisperDownloadTest() { installScript(); }
};

// Waits for a file that the test makes.
const QByteArray untilGo = "while [ ! -e go ]; do :; done\n";
const QByteArray untilLoad = "while [ ! -e load ]; do :; done\n";

TEST_F(WhisperDownloadTest, theScriptFetchesAndTheLibraryLoads) {
    installInterpreter("printf '%s|' \"$@\" >> arguments; echo \"$XDG_CACHE_HOME\" >> caches; "
                       "[ \"$1\" != -c ] || touch base.pt");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
    EXPECT_EQ(contentOf(u"arguments"_s),
              script.toUtf8() + "|base|-c|" + whisperProofScript(u"base"_s).toUtf8() + '|');
    const QByteArray where = folder.filePath(u"the cache"_s).toUtf8() + '\n';
    EXPECT_EQ(contentOf(u"caches"_s), where + where);
    EXPECT_TRUE(dialogs.alerts.isEmpty());
    EXPECT_TRUE(log.contains(u"✓ Whisper-Modell geladen: base"_s));
}

TEST_F(WhisperDownloadTest, howFarItIsCanBeAskedAtEachStep) {
    installInterpreter("if [ \"$1\" = -c ]; then " + untilLoad +
                       "else echo progress 0; echo progress 42; " + untilGo +
                       "echo progress 100; while [ ! -e whole ]; do :; done\nfi");
    EXPECT_EQ(manager->percent(u"base"_s), std::nullopt);
    EXPECT_FALSE(manager->isDownloading());
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(manager->isDownloading());
    EXPECT_TRUE(waitUntil([this] { return manager->percent(u"base"_s) == 42; }));
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    place(u"go"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Checking));
    place(u"whole"_s);
    // The library's turn: it says nothing of its own.
    EXPECT_TRUE(waitUntil([this] { return manager->percent(u"base"_s) == std::nullopt; }));
    EXPECT_EQ(manager->state(u"base"_s), State::Checking);
    EXPECT_TRUE(manager->isDownloading());
    manager->downloadWhisperModel(u"base"_s); // Not again meanwhile,
    manager->deleteWhisperModel(u"base"_s);   // nor away.
    EXPECT_EQ(manager->state(u"base"_s), State::Checking);
    place(u"base.pt"_s);
    place(u"load"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
    EXPECT_FALSE(manager->isDownloading());
}

TEST_F(WhisperDownloadTest, aDamagedFileIsFoundOutByTheScriptAndFetchedAnew) {
    installInterpreter("[ \"$1\" = -c ] || { echo progress 100; echo progress 0; " + untilGo + "}");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(waitUntil([this] { return manager->percent(u"base"_s) == 0; }));
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    place(u"go"_s);
    EXPECT_TRUE(waitUntil([this] { return !manager->isDownloading(); }));
}

TEST_F(WhisperDownloadTest, aFailureIsKeptUntilAnotherDownloadGoesOn) {
    installInterpreter("touch base.pt.part; echo progress 42; echo note gone; echo Traceback; "
                       "echo out of luck; [ \"$1\" = -c ] && touch loaded; exit 1");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Failed));
    EXPECT_EQ(manager->failure(u"base"_s), u"out of luck"_s);
    EXPECT_FALSE(isThere(u"loaded"_s));
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].message, u"base: out of luck"_s);
    EXPECT_TRUE(log.contains(u"Whisper-Modell base: gone"_s));
    EXPECT_TRUE(log.contains(u"❌ Whisper-Modell base: out of luck"_s));
    look();
    EXPECT_EQ(manager->state(u"base"_s), State::Failed);

    installInterpreter("[ ! -e base.pt.part ] || mv base.pt.part base.pt");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_EQ(manager->state(u"base"_s), State::Downloading);
    EXPECT_EQ(manager->failure(u"base"_s), QString());
    EXPECT_TRUE(reaches(u"base"_s, State::Downloaded));
}

TEST_F(WhisperDownloadTest, aModelThatIsWholeButDoesNotLoadHasFailed) {
    installInterpreter("[ \"$1\" = -c ] && { echo progress 99; echo out of memory; exit 1; }; "
                       "touch base.pt");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Failed));
    EXPECT_EQ(manager->failure(u"base"_s), u"out of memory"_s);
}

TEST_F(WhisperDownloadTest, anInterpreterThatGoesBetweenTheStepsIsAFailure) {
    installInterpreter("rm \"$0\"");
    manager->downloadWhisperModel(u"base"_s);
    EXPECT_TRUE(reaches(u"base"_s, State::Failed));
    EXPECT_NE(manager->failure(u"base"_s), QString());
    EXPECT_FALSE(manager->isDownloading());
}

TEST_F(WhisperDownloadTest, aDownloadIsOverWhenTheManagerIsGone) {
    installInterpreter("trap 'touch ended; exit' TERM; touch base.pt.part started; "
                       "while :; do :; done");
    manager->downloadWhisperModel(u"base"_s);
    manager->downloadWhisperModel(u"tiny"_s);
    EXPECT_TRUE(waitUntil([this] { return isThere(u"started"_s); }));
    manager.reset();
    EXPECT_TRUE(isThere(u"ended"_s));
    EXPECT_TRUE(isThere(u"base.pt.part"_s));
    drainEvents();
    EXPECT_TRUE(dialogs.alerts.isEmpty());
}

TEST_F(WhisperDownloadTest, whatIsBegunIsNoModelUntilItIsWhole) {
    place(u"base.pt.part"_s, "begun");
    place(u"base.pt.part.source"_s, "{}");
    // Two that earlier versions have broken off.
    place(u"tiny.pt"_s, "PK\x03\x04 and so on");
    place(u"small.pt"_s, "half");
    place(u"small.pt.part"_s);
    place(u"medium.pt"_s, "whatever this is");
    look();
    for (const QString& id : {u"base"_s, u"tiny"_s, u"small"_s}) {
        EXPECT_EQ(manager->state(id), State::Absent) << qPrintable(id);
    }
    EXPECT_EQ(manager->state(u"medium"_s), State::Downloaded);
}

TEST_F(WhisperDownloadTest, whatDownloadsHaveLeftGoesWithTheModel) {
    place(u"large-v2.pt"_s);
    place(u"large-v3.pt.part"_s);
    place(u"large-v3.pt.part.source"_s);
    place(u"base.pt.part"_s);
    look();
    EXPECT_EQ(manager->state(u"large"_s), State::Downloaded);
    manager->deleteWhisperModel(u"large"_s);
    EXPECT_TRUE(reaches(u"large"_s, State::Absent));
    EXPECT_EQ(QDir(cache).entryList(QDir::Files), QStringList(u"base.pt.part"_s));
}

} // namespace

} // namespace orv::test
