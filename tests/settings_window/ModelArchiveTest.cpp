#include "ModelArchive.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QByteArray head = "PK\x03\x04";

/// The end of an archive's directory, of which only its length counts here.
QByteArray archiveEnd(const QByteArray& comment = {}) {
    QByteArray end = "PK\x05\x06" + QByteArray(16, '\x07');
    end.append(static_cast<char>(comment.size() % 256));
    end.append(static_cast<char>(comment.size() / 256));
    return end + comment;
}

bool isCutShort(const QByteArray& tail) {
    return archiveIsCutShort(head, tail);
}

TEST(ModelArchive, anArchiveWithItsEndIsWhole) {
    EXPECT_FALSE(isCutShort(archiveEnd()));
    EXPECT_FALSE(isCutShort("content" + archiveEnd()));
    EXPECT_FALSE(isCutShort("content" + archiveEnd(QByteArray(300, 'c'))));
    EXPECT_FALSE(isCutShort(archiveEnd(QByteArray(0xffff, 'c'))));
}

TEST(ModelArchive, anArchiveThatWasBrokenOffAnywhereIsNot) {
    const QByteArray whole = head + QByteArray(100, 'x') + archiveEnd("comment");
    for (qsizetype size = head.size(); size < whole.size(); ++size) {
        EXPECT_TRUE(isCutShort(whole.left(size))) << size;
    }
    EXPECT_FALSE(isCutShort(whole));
}

TEST(ModelArchive, anEndInTheMiddleIsNoEnd) {
    EXPECT_TRUE(isCutShort(archiveEnd() + "an archive within the archive"));
    EXPECT_FALSE(isCutShort(archiveEnd() + "an archive in it" + archiveEnd()));
}

TEST(ModelArchive, whatIsNoArchiveTellsNothing) {
    EXPECT_FALSE(archiveIsCutShort("", ""));
    EXPECT_FALSE(archiveIsCutShort("PK\x03", "PK\x03"));
    EXPECT_FALSE(archiveIsCutShort("\x80\x02\x8a\x0a", "anything"));
}

TEST(ModelArchive, ofAFileTheFirstAndTheLastBytesCount) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"base.pt"_s);
    EXPECT_FALSE(modelArchiveIsCutShort(path));
    const QByteArray whole = head + QByteArray(3 * archiveEndSize, 'x') + archiveEnd();
    for (const qsizetype missing : {1, 22, 100, 150000}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(whole.left(whole.size() - missing));
        file.close();
        EXPECT_TRUE(modelArchiveIsCutShort(path)) << missing;
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(whole);
    file.close();
    EXPECT_FALSE(modelArchiveIsCutShort(path));
}

} // namespace

} // namespace orv::test
