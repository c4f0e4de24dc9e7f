#include "StoreFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orv::test {

DefaultsStore& StoreFixture::open(DefaultsStore::Timings timings) {
    store_.reset();
    store_ = std::make_unique<DefaultsStore>(disk_, file(), timings);
    return *store_;
}

void StoreFixture::place(const QByteArray& content) {
    QDir().mkpath(folder());
    writeAll(file(), content);
}

QByteArray StoreFixture::content() const {
    return readAll(file());
}

QJsonObject StoreFixture::json() const {
    const QJsonDocument document = QJsonDocument::fromJson(content());
    EXPECT_TRUE(document.isObject()) << content().toStdString();
    return document.object();
}

QStringList StoreFixture::names() const {
    return QDir(folder()).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void writeAll(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

unsigned modeOf(const QString& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    return status.st_mode & 07777U;
}

OrdinaryUser::OrdinaryUser(const QString& folder)
    : before_(::geteuid()) {
    if (before_ != 0) {
        return;
    }
    constexpr uid_t nobody = 65534;
    const auto handOver = [](const QString& path) {
        EXPECT_EQ(::chown(QFile::encodeName(path).constData(), nobody, nobody), 0);
    };
    handOver(folder);
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        handOver(entries.next());
    }
    EXPECT_EQ(::seteuid(nobody), 0);
}

OrdinaryUser::~OrdinaryUser() {
    EXPECT_EQ(::seteuid(before_), 0);
}

namespace {

void limitFileSize(rlim_t bytes) {
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

} // namespace

FullDisk::FullDisk(qint64 bytes) {
    // Without this the system ends the process instead of refusing the write.
    EXPECT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    limitFileSize(static_cast<rlim_t>(bytes));
}

FullDisk::~FullDisk() {
    limitFileSize(RLIM_INFINITY);
}

} // namespace orv::test
