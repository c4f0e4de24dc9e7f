#include "BackendLogFile.h"

#include "BackendLogHeading.h"
#include "BackendLogStep.h"
#include "UniqueFd.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QString lastError() {
    return qt_error_string(errno);
}

void makeFolder(const QString& folder) {
    if (QFileInfo(folder).isDir()) {
        return;
    }
    const QString parent = QFileInfo(folder).absolutePath();
    if (parent != folder) {
        makeFolder(parent);
    }
    ::mkdir(QFile::encodeName(folder).constData(), 0700);
}

struct OpenLog {
    UniqueFd file = {};
    qint64 size = 0;
    QString problem = {};
};

OpenLog openLog(const QString& path) {
    // Not blocking: a pipe in this place must not hold up the queue.
    UniqueFd file(::open(
        QFile::encodeName(path).constData(),
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
    if (!file.isOpen()) {
        return {.problem = errno == ELOOP ? u"symbolic link"_s : lastError()};
    }
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0) {
        return {.problem = lastError()};
    }
    if (!S_ISREG(status.st_mode)) {
        return {.problem = u"not a regular file"_s};
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0 && ::fchmod(file.get(), 0600) != 0) {
        return {.problem = lastError()};
    }
    return {.file = std::move(file), .size = status.st_size};
}

/// How many bytes were written; less than all when `errno` says why.
qsizetype writeAll(const UniqueFd& file, QByteArrayView bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file.get(), bytes.data() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count >= 0) {
            written += count;
        } else if (errno != EINTR) {
            break;
        }
    }
    return written;
}

} // namespace

BackendLogFile::BackendLogFile(QString path, QString earlier, qint64 limit)
    : path_(std::move(path))
    , earlier_(std::move(earlier))
    , limit_(limit) {}

BackendLogFile::Outcome BackendLogFile::append(QByteArrayView bytes, const QDateTime& now) const {
    if (bytes.isEmpty()) {
        return {};
    }
    makeFolder(QFileInfo(path_).absolutePath());
    OpenLog log = openLog(path_);
    qsizetype taken = 0;
    while (log.problem.isEmpty() && taken < bytes.size()) {
        const BackendLogStep step = nextStep(bytes.sliced(taken), log.size, limit_);
        taken += step.skipped;
        if (step.action == BackendLogStep::Action::Rotate) {
            const bool isMoved = std::rename(QFile::encodeName(path_).constData(),
                                             QFile::encodeName(earlier_).constData()) == 0;
            log = isMoved ? openLog(path_) : OpenLog{.problem = lastError()};
            continue;
        }
        const bool isHeading = step.action == BackendLogStep::Action::Head;
        const QByteArray heading = isHeading ? continuationHeading(now) : QByteArray();
        const QByteArrayView next =
            isHeading ? QByteArrayView(heading) : bytes.sliced(taken, step.count);
        const qsizetype written = writeAll(log.file, next);
        if (written < next.size()) {
            log.problem = lastError();
        }
        log.size += written;
        taken += isHeading ? 0 : written;
    }
    return {taken, log.problem};
}

} // namespace orv
