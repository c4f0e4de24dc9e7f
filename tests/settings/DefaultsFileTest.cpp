// The file behind the store: damage, refusing disks, links, leftovers.

#include "FewFiles.h"
#include "StoreFixture.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {

class DefaultsFileTest : public StoreFixture {
  protected:
    qsizetype refusals() const { return linesStarting(u"❌ Einstellungen nicht gespeichert ("); }

    qsizetype recoveries() const { return linesStarting(u"✅ Einstellungen wieder gespeichert: "); }

    qsizetype linesStarting(QStringView start) const {
        const QStringList lines = log_.lines();
        return std::count_if(lines.begin(), lines.end(),
                             [&](const QString& line) { return line.startsWith(start); });
    }

    /// An abandoned temporary file of the store.
    QString leftover() const { return file() + u".0123456789abcdef.tmp"; }
};

TEST_F(DefaultsFileTest, theFileIsForItsOwnerAloneWhateverTheUmask) {
    const mode_t before = ::umask(0);
    open().setString(u"azureApiKey"_s, u"geheim"_s);
    close();
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(modeOf(folder()), 0700U);
    ::umask(0277);
    open().setString(u"azureApiKey"_s, u"anders"_s);
    close();
    ::umask(before);
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(json().value(u"azureApiKey"_s).toString(), u"anders"_s);
}

TEST_F(DefaultsFileTest, aFileThatOthersMayReadBecomesPrivateAtTheStart) {
    place("{}");
    ASSERT_EQ(::chmod(QFile::encodeName(file()).constData(), 0644), 0);
    open();
    EXPECT_EQ(modeOf(file()), 0600U);
}

#if ORV_MAY_LACK_FILES

TEST_F(DefaultsFileTest, aFileThatTheSystemDoesNotGiveOutIsLeftAloneAndReadLater) {
    place(R"({"targetLang": "fr", "sourceLang": "en", "unknown": 1, "gone": 2})");
    std::optional<test::FewFiles> none(0);
    DefaultsStore& store = open();
    store.setString(u"targetLang"_s, u"it"_s);
    store.remove(u"gone"_s);
    EXPECT_FALSE(store.waitUntilWritten());
    none.reset();
    EXPECT_EQ(linesStarting(u"⚠️ Einstellungsdatei "), 1);
    EXPECT_EQ(refusals(), 1);
    EXPECT_TRUE(readAll(file()).contains("\"fr\"")) << "untouched";
    EXPECT_FALSE(QFileInfo::exists(corruptFile()));

    store.setString(u"sttEngine"_s, u"vosk"_s);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(recoveries(), 1);
    EXPECT_EQ(json().value(u"targetLang"_s), u"it"_s) << "what was set since counts";
    EXPECT_EQ(json().value(u"sourceLang"_s), u"en"_s);
    EXPECT_EQ(json().value(u"unknown"_s), 1);
    EXPECT_FALSE(json().contains(u"gone"_s)) << "what was removed since stays away";
    EXPECT_EQ(store.string(u"sourceLang"_s), u"en"_s);

    writeAll(file(), R"({"another": 3})");
    store.setString(u"sttEngine"_s, u"google"_s);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_FALSE(json().contains(u"another"_s)) << "it is read late only once";
}

TEST_F(DefaultsFileTest, aFileThatIsDamagedWhenItIsReadLateIsKept) {
    place("damaged");
    std::optional<test::FewFiles> none(0);
    DefaultsStore& store = open();
    none.reset();
    store.setString(u"targetLang"_s, u"it"_s);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(readAll(corruptFile()), "damaged");
    EXPECT_EQ(json().value(u"targetLang"_s), u"it"_s);
}

#endif

TEST_F(DefaultsFileTest, aReadErrorOfTheDiskIsNoDamage) {
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_TRUE(QFile::link(u"/proc/self/mem"_s, file())); // Opens, and fails to read.
    open().setString(u"targetLang"_s, u"it"_s);
    close();
    EXPECT_EQ(linesStarting(u"⚠️ Einstellungsdatei /proc/self/mem zur Zeit nicht lesbar"), 1);
    EXPECT_EQ(refusals(), 1);
}

/// A device of this process alone, which no mistake can take from the machine: files of terminals
/// cannot be renamed, not even by root.
class OwnDevice {
  public:
    OwnDevice()
        : controller_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_TRUE(controller_.isOpen());
        EXPECT_EQ(::grantpt(controller_.get()), 0);
        EXPECT_EQ(::unlockpt(controller_.get()), 0);
    }

    QString path() const { return QString::fromLatin1(::ptsname(controller_.get())); }

  private:
    UniqueFd controller_;
};

TEST_F(DefaultsFileTest, aDeviceInThePlaceOfTheFileIsNeitherMovedNorReplaced) {
    const OwnDevice device;
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_TRUE(QFile::link(device.path(), file()));
    const mode_t mode = modeOf(device.path());
    open().setString(u"targetLang"_s, u"it"_s);
    close();
    EXPECT_EQ(modeOf(device.path()), mode);
    EXPECT_EQ(linesStarting(u"⚠️ Einstellungsdatei "), 1);
    EXPECT_EQ(linesStarting(QString(u"⚠️ Einstellungsdatei " % device.path() % u" zur Zeit")),
              1);
    EXPECT_EQ(linesStarting(QString(u"❌ Einstellungen nicht gespeichert (" % device.path() %
                                    u"): not a regular file")),
              1);
}

TEST_F(DefaultsFileTest, nothingButTheFileRemainsInTheFolder) {
    open().setBool(u"showOverlay"_s, true);
    close();
    EXPECT_EQ(names(), QStringList{u"defaults.json"_s});
}

TEST_F(DefaultsFileTest, aDamagedFileIsKeptBesideItAndTheStoreStartsEmpty) {
    const QByteArrayList damaged = {"{\"targetLang\": \"fr\"",
                                    "",
                                    "[1, 2]",
                                    "\"text\"",
                                    "{} x",
                                    QByteArray("\x00\xff\x80\x01", 4),
                                    "{\"a\": \xff}"};
    for (const QByteArray& bytes : damaged) {
        SCOPED_TRACE(bytes.toStdString());
        log_.clear();
        place(bytes);
        DefaultsStore& store = open();
        EXPECT_FALSE(store.contains(u"targetLang"_s));
        EXPECT_EQ(readAll(corruptFile()), bytes);
        EXPECT_FALSE(QFileInfo::exists(file()));
        ASSERT_EQ(log_.lines().size(), 1);
        EXPECT_TRUE(log_.lines().first().startsWith(u"⚠️ Einstellungsdatei unlesbar ("));
        EXPECT_TRUE(log_.lines().first().endsWith(
            QString(u"), gesichert als " + corruptFile() + u", Standardwerte gelten")));
        store.setString(u"targetLang"_s, u"it"_s);
        EXPECT_EQ(open().string(u"targetLang"_s), u"it"_s);
        close();
    }
}

TEST_F(DefaultsFileTest, anEarlierDamagedFileIsNotWrittenOver) {
    const QByteArrayList damaged = {"first", "second", "third"};
    for (const QByteArray& bytes : damaged) {
        place(bytes);
        open();
        close();
    }
    EXPECT_EQ(readAll(corruptFile()), "third");
    EXPECT_EQ(readAll(corruptFile() + u".1"), "first");
    EXPECT_EQ(readAll(corruptFile() + u".2"), "second");
}

TEST_F(DefaultsFileTest, aFileCutAnywhereIsEitherReadOrKept) {
    place(R"({"a": 1, "b": {"c": [true, null, "ü"]}, "d": -1.5e3})");
    const QByteArray whole = content();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        place(whole.left(length));
        EXPECT_FALSE(open().contains(u"a"_s));
        EXPECT_EQ(readAll(corruptFile()), whole.left(length));
        close();
        ASSERT_TRUE(QFile::remove(corruptFile()));
    }
    place(whole);
    EXPECT_TRUE(open().contains(u"a"_s));
}

TEST_F(DefaultsFileTest, aFolderInThePlaceOfTheFileIsKeptAside) {
    ASSERT_TRUE(QDir().mkpath(file()));
    DefaultsStore& store = open();
    EXPECT_TRUE(QFileInfo(corruptFile()).isDir());
    store.setInteger(u"vmixPort"_s, 1);
    EXPECT_TRUE(store.waitUntilWritten());
}

TEST_F(DefaultsFileTest, aPipeInThePlaceOfTheFileDoesNotHoldUpTheStart) {
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_EQ(::mkfifo(QFile::encodeName(file()).constData(), 0600), 0);
    EXPECT_FALSE(open().contains(u"vmixPort"_s));
    EXPECT_TRUE(QFileInfo::exists(corruptFile()));
}

TEST_F(DefaultsFileTest, aFileThatMayNotBeReadIsKeptBesideIt) {
    place(R"({"targetLang": "fr"})");
    ASSERT_EQ(::chmod(QFile::encodeName(file()).constData(), 0), 0);
    const OrdinaryUser user(home_.path());
    EXPECT_FALSE(open().contains(u"targetLang"_s));
    EXPECT_TRUE(QFileInfo::exists(corruptFile()));
    EXPECT_EQ(linesStarting(u"⚠️ Einstellungsdatei unlesbar ("), 1);
}

TEST_F(DefaultsFileTest, aDamagedFileThatCannotBeKeptIsNeverWrittenOver) {
    place("damaged");
    const OrdinaryUser user(home_.path());
    const QByteArray path = QFile::encodeName(folder());
    ASSERT_EQ(::chmod(path.constData(), 0500), 0);
    DefaultsStore& store = open();
    EXPECT_EQ(linesStarting(QString(u"⚠️ Einstellungsdatei " + file() + u" unlesbar (")), 1);
    store.setInteger(u"vmixPort"_s, 1);
    EXPECT_FALSE(store.waitUntilWritten());
    EXPECT_EQ(content(), "damaged");
    ASSERT_EQ(::chmod(path.constData(), 0700), 0);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(readAll(corruptFile()), "damaged");
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 1);
}

TEST_F(DefaultsFileTest, aReadOnlyFolderGivesOneLineUntilItRecoversAndLosesNothing) {
    place(R"({"vmixPort": 1})");
    const OrdinaryUser user(home_.path());
    const QByteArray path = QFile::encodeName(folder());
    ASSERT_EQ(::chmod(path.constData(), 0500), 0);
    DefaultsStore& store = open();
    for (int port = 2; port <= 5; ++port) {
        store.setInteger(u"vmixPort"_s, port);
        EXPECT_FALSE(store.waitUntilWritten());
        EXPECT_EQ(store.integer(u"vmixPort"_s), port);
    }
    EXPECT_EQ(refusals(), 1);
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 1);

    ASSERT_EQ(::chmod(path.constData(), 0700), 0);
    store.setInteger(u"voskPort"_s, 6);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(recoveries(), 1);
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 5);

    ASSERT_EQ(::chmod(path.constData(), 0500), 0);
    store.setInteger(u"vmixPort"_s, 7);
    EXPECT_FALSE(store.waitUntilWritten());
    EXPECT_EQ(refusals(), 2);
    ASSERT_EQ(::chmod(path.constData(), 0700), 0);
}

TEST_F(DefaultsFileTest, aFolderThatCannotBeMadeIsMadeOnceTheWayIsFree) {
    writeAll(home_.filePath(u"config"_s), "in the way");
    DefaultsStore& store = open();
    EXPECT_TRUE(log_.lines().isEmpty());
    store.setInteger(u"vmixPort"_s, 2);
    EXPECT_FALSE(store.waitUntilWritten());
    EXPECT_EQ(refusals(), 1);
    ASSERT_TRUE(QFile::remove(home_.filePath(u"config"_s)));
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 2);
}

TEST_F(DefaultsFileTest, aDiskThatFillsAnywhereLeavesTheEarlierFileWhole) {
    DefaultsStore& store = open();
    store.setString(u"text"_s, u"old"_s);
    ASSERT_TRUE(store.waitUntilWritten());
    const QByteArray old = content();
    const QString longer(6000, u'x');
    qsizetype cases = 0;
    for (qint64 room = 0; room < 6000; room += 61) {
        {
            const FullDisk disk(room);
            store.setString(u"text"_s, longer + QString::number(room));
            EXPECT_FALSE(store.waitUntilWritten());
            EXPECT_EQ(content(), old);
            EXPECT_EQ(names(), QStringList{u"defaults.json"_s});
        }
        ++cases;
    }
    EXPECT_EQ(refusals(), 1);
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(recoveries(), 1);
    EXPECT_EQ(json().value(u"text"_s).toString(), longer + QString::number((cases - 1) * 61));
}

TEST_F(DefaultsFileTest, aRefusedChangeIsTriedAgainWithoutANewOne) {
    DefaultsStore& store = open({.retry = std::chrono::milliseconds(5)});
    {
        const FullDisk disk(0);
        store.setInteger(u"vmixPort"_s, 3);
        EXPECT_FALSE(store.waitUntilWritten());
    }
    EXPECT_TRUE(waitUntil([this] { return recoveries() == 1; }));
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 3);
    EXPECT_EQ(refusals(), 1);
}

TEST_F(DefaultsFileTest, closingTriesARefusedChangeOnceMore) {
    DefaultsStore& store = open();
    {
        const FullDisk disk(0);
        store.setInteger(u"vmixPort"_s, 3);
        EXPECT_FALSE(store.waitUntilWritten());
    }
    close();
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 3);
}

TEST_F(DefaultsFileTest, closingDoesNotWaitForADiskThatGoesOnRefusing) {
    DefaultsStore& store = open();
    const FullDisk disk(0);
    store.setInteger(u"vmixPort"_s, 3);
    close();
    EXPECT_EQ(refusals(), 1);
    EXPECT_FALSE(QFileInfo::exists(file()));
}

TEST_F(DefaultsFileTest, closingWritesWhatIsStillOnItsWay) {
    DefaultsStore& store = open();
    for (int i = 0; i <= 100; ++i) {
        store.setInteger(u"value"_s, i);
    }
    close();
    EXPECT_EQ(json().value(u"value"_s).toInt(), 100);
}

TEST_F(DefaultsFileTest, leftoversOfAKilledProcessAreRemovedAtStart) {
    place("{}");
    writeAll(leftover(), "half a fi");
    open();
    EXPECT_EQ(names(), QStringList{u"defaults.json"_s});
}

TEST_F(DefaultsFileTest, onlyFilesOfTheStoresOwnNamingAreRemoved) {
    place("{}");
    const QStringList others = {u"defaults.json.0123456789abcdeg.tmp"_s,
                                u"defaults.json.0123456789abcdef.tmp.txt"_s,
                                u"defaults.json.tmp"_s,
                                u"defaultsxjson.0123456789abcdef.tmp"_s,
                                u"other.json.0123456789abcdef.tmp"_s,
                                u"notes.txt"_s};
    for (const QString& name : others) {
        writeAll(folder() + u'/' + name, "mine");
    }
    open();
    for (const QString& name : others) {
        EXPECT_TRUE(names().contains(name)) << name.toStdString();
    }
}

TEST_F(DefaultsFileTest, theTemporaryFileOfALivingWriterStays) {
    place("{}");
    writeAll(leftover(), "being writt");
    const int writer = ::open(QFile::encodeName(leftover()).constData(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    ASSERT_EQ(::flock(writer, LOCK_EX), 0);
    open();
    EXPECT_TRUE(QFileInfo::exists(leftover()));
    ASSERT_EQ(::close(writer), 0);
    open();
    EXPECT_FALSE(QFileInfo::exists(leftover()));
}

TEST_F(DefaultsFileTest, aLinkInThePlaceOfTheFileStaysALink) {
    const QString target = home_.filePath(u"dotfiles/settings.json"_s);
    ASSERT_TRUE(QDir().mkpath(home_.filePath(u"dotfiles"_s)));
    ASSERT_TRUE(QDir().mkpath(folder()));
    writeAll(target, R"({"targetLang": "fr"})");
    ASSERT_TRUE(QFile::link(u"../../dotfiles/settings.json"_s, file()));
    DefaultsStore& store = open();
    EXPECT_EQ(store.string(u"targetLang"_s), u"fr"_s);
    store.setString(u"targetLang"_s, u"it"_s);
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
    EXPECT_EQ(QJsonDocument::fromJson(readAll(target)).object().value(u"targetLang"_s).toString(),
              u"it"_s);
}

TEST_F(DefaultsFileTest, aLinkToNothingIsAnEmptyStoreWhoseFileIsMadeBehindTheLink) {
    const QString target = home_.filePath(u"elsewhere/settings.json"_s);
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_TRUE(QFile::link(target, file()));
    open().setString(u"targetLang"_s, u"it"_s);
    close();
    EXPECT_TRUE(log_.lines().isEmpty());
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(target));
}

TEST_F(DefaultsFileTest, linksInACircleAreAnUnreadableFileAndNotAnEndlessStart) {
    ASSERT_TRUE(QDir().mkpath(folder()));
    ASSERT_TRUE(QFile::link(folder() + u"/other", file()));
    ASSERT_TRUE(QFile::link(file(), folder() + u"/other"));
    EXPECT_FALSE(open().contains(u"targetLang"_s));
}

} // namespace orv::test
