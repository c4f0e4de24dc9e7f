#include "SingleInstance.h"

#include "ThreadChecks.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace orv {

namespace {

constexpr char shown = '+';
constexpr int waitingStarts = 16;

/// An address in the abstract namespace: a zero byte, then the name.
struct Address {
    explicit Address(const QByteArray& name) {
        value.sun_family = AF_UNIX;
        const auto size = static_cast<std::size_t>(name.size());
        std::memcpy(value.sun_path + 1, name.constData(), size);
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + size);
    }

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&value); }

    sockaddr_un value = {};
    socklen_t length = 0;
};

UniqueFd makeSocket(int flags) {
    return UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

/// Names are free for all users to take: only a program of the same user is believed.
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

} // namespace

SingleInstance::SingleInstance(const QByteArray& files, std::chrono::milliseconds patience)
    : name_("orvane-" + QByteArray::number(::getuid()) + '-' +
            QCryptographicHash::hash(files, QCryptographicHash::Sha256).toHex())
    , patience_(patience) {}

SingleInstance::Claim SingleInstance::claim() {
    const Address address(name_);
    const QDeadlineTimer deadline(patience_);
    for (;;) {
        UniqueFd listener = makeSocket(SOCK_NONBLOCK);
        if (::bind(listener.get(), address.get(), address.length) == 0) {
            if (::listen(listener.get(), waitingStarts) == 0) {
                listener_ = std::move(listener);
            }
            return Claim::First;
        }
        if (errno != EADDRINUSE) {
            return Claim::First;
        }
        const UniqueFd connection = makeSocket(0);
        if (::connect(connection.get(), address.get(), address.length) != 0) {
            if (deadline.hasExpired()) {
                return Claim::NoAnswer;
            }
            // Bound but not listening yet, or gone since.
            ::poll(nullptr, 0, 1);
            continue;
        }
        if (!isOurs(connection)) {
            return Claim::First;
        }
        if (!becomesReadable(connection, deadline)) {
            return Claim::NoAnswer;
        }
        char answer = 0;
        if (::read(connection.get(), &answer, 1) == 1 && answer == shown) {
            return Claim::Shown;
        }
        // It has ended without an answer, and its name with it.
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
