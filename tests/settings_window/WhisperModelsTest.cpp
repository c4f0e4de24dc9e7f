#include "WhisperModels.h"

#include "L10n.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(WhisperModels, areFiveFromSmallToLargeWithATextEach) {
    const StringTable& texts = L10n::strings().at(UILanguage::English);
    QStringList ids;
    for (const WhisperModel& model : whisperModels()) {
        ids.append(model.id);
        EXPECT_EQ(model.detailKey, u"settings.whisper."_s + model.id);
        EXPECT_TRUE(texts.text(model.detailKey));
        EXPECT_GT(model.megabytes, 0);
    }
    EXPECT_EQ(ids, (QStringList{u"tiny"_s, u"base"_s, u"small"_s, u"medium"_s, u"large"_s}));
}

TEST(WhisperModels, aFileNamedByTheIdIsADownloadedModel) {
    EXPECT_EQ(downloadedWhisperModels({u"base.pt"_s, u"tiny.pt"_s}),
              (QSet<QString>{u"base"_s, u"tiny"_s}));
}

TEST(WhisperModels, onlyTheThirdVersionOfLargeIsLargeDownloaded) {
    EXPECT_EQ(downloadedWhisperModels({u"large-v3.pt"_s}), QSet<QString>{u"large"_s});
}

TEST(WhisperModels, everyFileOfLargeCounts) {
    for (const QString& file :
         {u"large.pt"_s, u"large-v1.pt"_s, u"large-v2.pt"_s, u"large-v3.pt"_s}) {
        EXPECT_EQ(downloadedWhisperModels({file}), QSet<QString>{u"large"_s});
    }
}

TEST(WhisperModels, otherFilesAreNoModels) {
    EXPECT_TRUE(downloadedWhisperModels({}).isEmpty());
    EXPECT_TRUE(downloadedWhisperModels({u"base.pt.part"_s, u"base.en.pt"_s, u"tiny-v3.pt"_s,
                                         u"large-v4.pt"_s, u"turbo.pt"_s, u".pt"_s, u"Base.pt"_s})
                    .isEmpty());
}

TEST(WhisperModels, aFileWithAPartBesideItIsNoModel) {
    EXPECT_TRUE(downloadedWhisperModels({u"base.pt"_s, u"base.pt.part"_s}).isEmpty());
    EXPECT_EQ(downloadedWhisperModels({u"base.pt"_s, u"base.pt.part.source"_s, u"tiny.pt.part"_s}),
              QSet<QString>{u"base"_s});
    // Another version of "large" is whole.
    EXPECT_EQ(downloadedWhisperModels({u"large-v2.pt"_s, u"large-v3.pt"_s, u"large-v3.pt.part"_s}),
              QSet<QString>{u"large"_s});
}

TEST(WhisperModels, onlyLargeHasMoreThanOneFile) {
    EXPECT_EQ(whisperModelFiles(u"small"_s), QStringList(u"small.pt"_s));
    EXPECT_EQ(whisperModelFiles(u"large"_s),
              (QStringList{u"large.pt"_s, u"large-v1.pt"_s, u"large-v2.pt"_s, u"large-v3.pt"_s}));
}

TEST(WhisperModels, aPathIsNoModel) {
    EXPECT_TRUE(whisperModelFiles(u"../../secret"_s).isEmpty());
    EXPECT_TRUE(whisperModelFiles(u""_s).isEmpty());
}

TEST(WhisperModels, theScriptLoadsTheModel) {
    EXPECT_EQ(whisperDownloadScript(u"base"_s), u"import whisper; whisper.load_model('base')"_s);
}

TEST(WhisperModels, theProofLoadsTheModelWithThePackageThatHasFetchedIt) {
    const QTemporaryDir packages;
    const auto place = [&](const QString& name, const QByteArray& content) {
        QFile file(packages.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    const auto said = [&] {
        QProcess python;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PYTHONPATH"_s, packages.path());
        environment.insert(u"PYTHONDONTWRITEBYTECODE"_s, u"1"_s);
        python.setProcessEnvironment(environment);
        python.setProcessChannelMode(QProcess::MergedChannels);
        python.start(u"/usr/bin/python3"_s, {u"-c"_s, whisperProofScript(u"base"_s)});
        EXPECT_TRUE(python.waitForFinished(-1));
        return python.readAll();
    };
    place(u"whisper.py"_s, "def load_model(name): print('whisper', name)\n");
    EXPECT_EQ(said(), "whisper base\n");
    // Where both are there the better one has fetched.
    place(u"faster_whisper.py"_s, "def WhisperModel(name, device, compute_type, local_files_only): "
                                  "print('faster', name, local_files_only)\n");
    EXPECT_EQ(said(), "faster base True\n");
}

TEST(LastLine, isTheLastThatSaysSomething) {
    EXPECT_EQ(lastLine("Traceback:\n  File x\nModuleNotFoundError: No module named 'whisper'\n\n"),
              u"ModuleNotFoundError: No module named 'whisper'"_s);
    EXPECT_EQ(lastLine(" 10%|#   |\r 50%|##  |\r"), u"50%|## |"_s);
    EXPECT_EQ(lastLine(""), QString());
    EXPECT_EQ(lastLine("\n\r \n"), QString());
}

TEST(LastLine, takesBytesThatAreNoTextAndLinesWithoutEnd) {
    EXPECT_EQ(lastLine("\xff\xfe"), u"\ufffd\ufffd"_s);
    EXPECT_EQ(lastLine(QByteArray(100000, 'a')).size(), 300);
}

} // namespace

} // namespace orv::test
