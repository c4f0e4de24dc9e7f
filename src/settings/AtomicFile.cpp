#include "AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// An open file, closed with the object.
class Descriptor {
  public:
    explicit Descriptor(int descriptor)
        : descriptor_(descriptor) {}

    ~Descriptor() {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }

    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

QString lastError() {
    return qt_error_string(errno);
}

QString folderOf(const QString& path) {
    return QFileInfo(path).absolutePath();
}

FileProblem makeFolders(const QString& folder) {
    if (QFileInfo(folder).isDir()) {
        return {};
    }
    const QString parent = folderOf(folder);
    if (parent != folder) {
        if (FileProblem problem = makeFolders(parent)) {
            return problem;
        }
    }
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST) {
        return lastError();
    }
    return {};
}

FileProblem writeAll(int descriptor, const QByteArray& content) {
    const char* position = content.constData();
    auto left = static_cast<std::size_t>(content.size());
    while (left > 0) {
        const ssize_t written = ::write(descriptor, position, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return lastError();
        }
        position += written;
        left -= static_cast<std::size_t>(written);
    }
    return {};
}

FileProblem synchroniseFolder(const QString& folder) {
    const Descriptor file(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!file.isOpen()) {
        return lastError();
    }
    // Some file systems cannot synchronise a folder and need not; they answer "invalid".
    if (::fsync(file.get()) != 0 && errno != EINVAL && errno != ENOTSUP) {
        return lastError();
    }
    return {};
}

FileContent readAll(int descriptor) {
    FileContent file;
    file.content.emplace();
    std::array<char, 16384> piece = {};
    for (;;) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count == 0) {
            return file;
        }
        if (count > 0) {
            file.content->append(piece.data(), static_cast<qsizetype>(count));
        } else if (errno != EINTR) {
            return {.problem = lastError(), .isFilesFault = false};
        }
    }
}

/// A name beside `path` that nobody else chooses.
QString temporaryName(const QString& path) {
    const QString number = QString::number(QRandomGenerator::system()->generate64(), 16);
    return path + u'.' + number.rightJustified(16, u'0') + u".tmp";
}

enum class Attempt { Done, Failed, NameLost };

/// Writes `content` to the new file `temporary` and renames it to `path`. `NameLost` when a
/// sweeping process saw the file in the moment between its creation and its lock, and took it for
/// abandoned.
Attempt replaceThrough(const QByteArray& temporary, const QByteArray& path,
                       const QByteArray& content, FileProblem& problem) {
    const Descriptor file(
        ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) {
        problem = lastError();
        return errno == EEXIST ? Attempt::NameLost : Attempt::Failed;
    }
    const bool lockTaken = ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    struct stat status = {};
    if (lockTaken || ::fstat(file.get(), &status) != 0 || status.st_nlink == 0) {
        ::unlink(temporary.constData());
        return Attempt::NameLost;
    }
    problem = writeAll(file.get(), content);
    if (!problem && (::fchmod(file.get(), 0600) != 0 || ::fsync(file.get()) != 0 ||
                     std::rename(temporary.constData(), path.constData()) != 0)) {
        problem = lastError();
    }
    if (problem) {
        ::unlink(temporary.constData());
        return Attempt::Failed;
    }
    return Attempt::Done;
}

} // namespace

FileProblem replaceFile(const QString& path, const QByteArray& content) {
    const QString folder = folderOf(path);
    if (FileProblem problem = makeFolders(folder)) {
        return problem;
    }
    Attempt attempt = Attempt::NameLost;
    FileProblem problem;
    for (int tries = 0; tries < 10 && attempt == Attempt::NameLost; ++tries) {
        const QString temporary = temporaryName(path);
        attempt =
            replaceThrough(QFile::encodeName(temporary), QFile::encodeName(path), content, problem);
    }
    if (attempt == Attempt::NameLost && !problem) {
        problem = u"temporary file was removed by another process"_s;
    }
    return attempt == Attempt::Done ? synchroniseFolder(folder) : problem;
}

void sweepTemporaryFiles(const QString& path) {
    const QRegularExpression ours(u'^' + QRegularExpression::escape(QFileInfo(path).fileName()) +
                                  u"\\.[0-9a-f]{16}\\.tmp$");
    const QDir folder(folderOf(path));
    const QStringList names = folder.entryList(QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        if (!ours.match(name).hasMatch()) {
            continue;
        }
        const QByteArray abandoned = QFile::encodeName(folder.filePath(name));
        const Descriptor file(
            ::open(abandoned.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            ::unlink(abandoned.constData());
        }
    }
}

FileProblem keepAsCorrupt(const QString& path) {
    const QString kept = path + u".corrupt";
    if (QFileInfo::exists(kept)) {
        int number = 1;
        while (QFileInfo::exists(kept + u'.' + QString::number(number))) {
            ++number;
        }
        const QString older = kept + u'.' + QString::number(number);
        if (std::rename(QFile::encodeName(kept).constData(),
                        QFile::encodeName(older).constData()) != 0) {
            return lastError();
        }
    }
    if (std::rename(QFile::encodeName(path).constData(), QFile::encodeName(kept).constData()) !=
        0) {
        return lastError();
    }
    return {};
}

FileContent readFile(const QString& path) {
    // Not blocking: a pipe in this place must not hold up the start of the program.
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return {};
        }
        return {.problem = lastError(), .isFilesFault = errno == EACCES || errno == ELOOP};
    }
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0) {
        return {.problem = lastError(), .isFilesFault = false};
    }
    if (!S_ISREG(status.st_mode)) {
        const bool isDevice = S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
        return {.problem = u"not a regular file"_s, .isFilesFault = !isDevice};
    }
    return readAll(file.get());
}

void keepFromOthers(const QString& path) {
    const Descriptor file(::open(QFile::encodeName(path).constData(),
                                 O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat status = {};
    if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        ::fchmod(file.get(), status.st_mode & S_IRWXU);
    }
}

QString followLinks(const QString& path) {
    QString target = path;
    constexpr int mostLinks = 40; // As many as the system itself follows.
    for (int links = 0; links < mostLinks && QFileInfo(target).isSymLink(); ++links) {
        target = QFileInfo(target).symLinkTarget();
    }
    return target;
}

} // namespace orv
