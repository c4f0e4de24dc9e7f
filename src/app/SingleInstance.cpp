#include "SingleInstance.h"

#include "ThreadChecks.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace orv {

namespace {

constexpr char shown = '+';
constexpr int waitingStarts = 16;
/// Between two looks at another program that cannot be asked yet.
constexpr int pause = 5; // Milliseconds.
/// For a file in a session's folder: of the user alone, and not to be swept away as old.
constexpr mode_t ownAndLasting = S_IRUSR | S_IWUSR | S_ISVTX;

/// The address of a socket in an open folder. Through the folder's number it is short enough
/// wherever the folder lies.
struct Address {
    Address(const UniqueFd& folder, const QByteArray& name) {
        value.sun_family = AF_UNIX;
        const QByteArray path = "/proc/self/fd/" + QByteArray::number(folder.get()) + '/' + name;
        std::memcpy(value.sun_path, path.constData(),
                    std::min(static_cast<std::size_t>(path.size()), sizeof(value.sun_path) - 1));
    }

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&value); }

    sockaddr_un value = {};
    socklen_t length = sizeof(value);
};

/// None where it cannot be made, belongs to somebody else or lets others change it.
UniqueFd openOwnFolder(const QString& path) {
    QDir().mkpath(path);
    UniqueFd folder(::open(QFile::encodeName(path).constData(),
                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat found = {};
    const bool isOurs = folder.isOpen() && ::fstat(folder.get(), &found) == 0 &&
                        found.st_uid == ::getuid() && (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    return isOurs ? std::move(folder) : UniqueFd();
}

UniqueFd makeSocket() {
    return UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// Only a program of the same user is believed.
bool isOurs(const UniqueFd& connection) {
    ucred peer = {};
    socklen_t length = sizeof(peer);
    return ::getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
           peer.uid == ::getuid();
}

bool becomesReadable(const UniqueFd& connection, const QDeadlineTimer& deadline) {
    for (;;) {
        pollfd entry = {connection.get(), POLLIN, 0};
        const int ready = ::poll(&entry, 1, static_cast<int>(deadline.remainingTime()));
        if (ready >= 0 || errno != EINTR) {
            return ready > 0;
        }
    }
}

/// One try to be shown by the program that holds the lock.
enum class Knock { Shown, Silent, TryAgain };

Knock knock(const Address& door, const QDeadlineTimer& deadline) {
    const UniqueFd connection = makeSocket();
    // Without waiting: a queue that is full, or a door that is not there yet, is tried again.
    if (::connect(connection.get(), door.get(), door.length) != 0 || !isOurs(connection)) {
        ::poll(nullptr, 0, pause);
        return deadline.hasExpired() ? Knock::Silent : Knock::TryAgain;
    }
    if (!becomesReadable(connection, deadline)) {
        return Knock::Silent;
    }
    char answer = 0;
    const bool answered = ::read(connection.get(), &answer, 1) == 1 && answer == shown;
    // Else it has ended without an answer, and its lock is free in a moment.
    return answered ? Knock::Shown : Knock::TryAgain;
}

} // namespace

SingleInstance::SingleInstance(const QString& folder, const QByteArray& files,
                               std::chrono::milliseconds patience)
    : lockName_("orvane-" +
                QCryptographicHash::hash(files, QCryptographicHash::Sha256).toHex().left(24) +
                ".lock")
    , doorName_(lockName_.chopped(5) + ".socket")
    , patience_(patience)
    , folder_(openOwnFolder(folder)) {}

SingleInstance::~SingleInstance() {
    if (!lock_.isOpen()) {
        return;
    }
    // The door first; and the lock's name while the lock is held, so that nobody gets one whose
    // name is somebody else's.
    ::unlinkat(folder_.get(), doorName_.constData(), 0);
    listener_.reset();
    ::unlinkat(folder_.get(), lockName_.constData(), 0);
}

SingleInstance::Claim SingleInstance::claim() {
    if (!folder_.isOpen()) {
        return Claim::First;
    }
    const Address door(folder_, doorName_);
    const QDeadlineTimer deadline(patience_);
    for (;;) {
        if (lock()) {
            if (lock_.isOpen()) { // Else the door may be somebody else's.
                listen();
            }
            return Claim::First;
        }
        switch (knock(door, deadline)) {
        case Knock::Shown:
            return Claim::Shown;
        case Knock::Silent:
            return Claim::NoAnswer;
        case Knock::TryAgain:
            break;
        }
    }
}

bool SingleInstance::lock() {
    UniqueFd file(::openat(folder_.get(), lockName_.constData(),
                           O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen()) {
        return true; // A folder that takes nothing: there is no way to find out.
    }
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    // Its owner removes the file when it ends: the lock counts only on the file that has the name.
    struct stat held = {};
    struct stat named = {};
    const bool counts =
        ::fstat(file.get(), &held) == 0 &&
        ::fstatat(folder_.get(), lockName_.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        held.st_dev == named.st_dev && held.st_ino == named.st_ino;
    if (counts) {
        ::fchmod(file.get(), ownAndLasting);
        lock_ = std::move(file);
    }
    return counts;
}

void SingleInstance::listen() {
    ::unlinkat(folder_.get(), doorName_.constData(), 0); // What a killed one has left.
    const Address door(folder_, doorName_);
    UniqueFd listener = makeSocket();
    if (::bind(listener.get(), door.get(), door.length) == 0 &&
        ::listen(listener.get(), waitingStarts) == 0) {
        ::fchmodat(folder_.get(), doorName_.constData(), ownAndLasting, 0);
        listener_ = std::move(listener);
    }
}

void SingleInstance::answerWith(std::function<bool()> show) {
    ORV_ON_MAIN();
    show_ = std::move(show);
    if (!listener_.isOpen()) {
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(listener_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { answer(); });
}

void SingleInstance::answer() {
    ORV_ON_MAIN();
    for (;;) {
        UniqueFd connection(
            ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!connection.isOpen()) {
            return;
        }
        if (!isOurs(connection)) {
            continue;
        }
        if (!show_()) {
            waiting_.push_back(std::move(connection));
        } else {
            [[maybe_unused]] const ssize_t sent = ::send(connection.get(), &shown, 1, MSG_NOSIGNAL);
        }
    }
}

} // namespace orv
