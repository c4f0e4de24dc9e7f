#include "LsofPortProbe.h"

#include "SpawnProgram.h"
#include "UniqueFd.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Reads until everyone has closed the other end, and returns false if time is up before.
bool readToTheEnd(int descriptor, QDeadlineTimer deadline, QByteArray& bytes) {
    std::array<char, 4096> piece = {};
    while (!deadline.hasExpired()) {
        pollfd entry = {descriptor, POLLIN, 0};
        const int ready = ::poll(&entry, 1, static_cast<int>(deadline.remainingTime()));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return false;
        }
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count == 0) {
            return true;
        }
        if (count > 0) {
            bytes.append(piece.data(), static_cast<qsizetype>(count));
        }
    }
    return false;
}

} // namespace

LsofPortProbe::LsofPortProbe(QString tool, std::chrono::milliseconds limit)
    : tool_(std::move(tool))
    , limit_(limit) {}

QString LsofPortProbe::systemTool() {
    const QString usual = u"/usr/sbin/lsof"_s;
    return QFileInfo::exists(usual) ? usual : u"lsof"_s;
}

std::optional<bool> LsofPortProbe::isPortInUse(quint16 port) {
    if (const std::optional<QByteArray> said = ask(port)) {
        return !QString::fromUtf8(*said).trimmed().isEmpty();
    }
    return std::nullopt;
}

std::optional<QByteArray> LsofPortProbe::ask(quint16 port) const {
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    const UniqueFd nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const SpawnedProgram tool =
        spawnProgram({QDir::isAbsolutePath(tool_) ? tool_ : QStandardPaths::findExecutable(tool_),
                      {u"-i"_s, u":"_s + QString::number(port)},
                      ownEnvironment(),
                      0,
                      {nothing.get(), writeEnd.get(), writeEnd.get()}});
    writeEnd.reset();
    if (!tool.error.isEmpty()) {
        return QByteArray();
    }
    QByteArray said;
    const bool isAll = readToTheEnd(readEnd.get(), QDeadlineTimer(limit_), said);
    // It has said everything or had its time; usually it has ended by now.
    ::kill(tool.pid, SIGKILL);
    while (::waitpid(tool.pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    return isAll || !said.trimmed().isEmpty() ? std::optional(said) : std::nullopt;
}

} // namespace orv
