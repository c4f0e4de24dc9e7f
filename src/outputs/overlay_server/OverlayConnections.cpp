#include "OverlayConnections.h"

#include "OverlayRequestHandler.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace orv {

using Waits = OverlayConnection::Waits;

namespace {

/// Smaller ones are left to the listening sockets.
constexpr std::uint64_t firstConnectionId = 16;

// Bounds of one turn, so that timers and work posted to the thread have theirs.
constexpr int roundsPerTurn = 32;
constexpr int acceptsPerRound = 4;
constexpr std::size_t eventsPerRound = 128;

/// How long a turn waits for more once it has begun. The way through the event loop costs as much
/// as answering half a request does; who comes within this time is spared it.
constexpr int millisecondsPerRound = 1;

std::size_t permittedDescriptors() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? static_cast<std::size_t>(limit.rlim_cur) : 0;
}

} // namespace

std::size_t waitingConnectionBound(const OverlayLimits& limits, std::size_t descriptors) {
    return std::max<std::size_t>(1, std::min(limits.waitingConnections, descriptors / 2));
}

OverlayConnections::OverlayConnections(OverlayLimits limits, OverlayRequestHandler& handler)
    : limits_(limits)
    , handler_(handler)
    , bound_(waitingConnectionBound(limits, permittedDescriptors()))
    , epoll_(::epoll_create1(EPOLL_CLOEXEC))
    , nextId_(firstConnectionId)
    , ready_(epoll_.get(), QSocketNotifier::Read) {
    sweeper_.setInterval(limits_.sweep);
    acceptAgain_.setInterval(limits_.acceptPause);
    acceptAgain_.setSingleShot(true);
    QObject::connect(&ready_, &QSocketNotifier::activated, &ready_, [this] { serveReady(); });
    QObject::connect(&sweeper_, &QTimer::timeout, &sweeper_, [this] { sweep(); });
    QObject::connect(&acceptAgain_, &QTimer::timeout, &acceptAgain_, [this] { acceptAgain(); });
}

void OverlayConnections::listenOn(std::vector<int> sockets) {
    Q_ASSERT(sockets.size() < firstConnectionId);
    stopListening();
    listening_ = std::move(sockets);
    if (!watchListener()) {
        listenerFailed(errno);
    }
}

void OverlayConnections::stopListening() {
    acceptAgain_.stop();
    unwatchListener();
    listening_.clear();
}

bool OverlayConnections::watchListener() {
    for (std::size_t place = 0; place < listening_.size(); ++place) {
        if (!watch(EPOLL_CTL_ADD, listening_[place], place, Waits::ForRequest) && errno != EEXIST) {
            return false;
        }
    }
    return true;
}

void OverlayConnections::unwatchListener() {
    for (const int socket : listening_) {
        watch(EPOLL_CTL_DEL, socket, 0, Waits::ForNothing);
    }
}

void OverlayConnections::serveReady() {
    std::array<epoll_event, eventsPerRound> events{};
    for (int round = 0; round < roundsPerTurn; ++round) {
        const int count = ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()),
                                       round == 0 ? 0 : millisecondsPerRound);
        if (count <= 0) {
            return;
        }
        for (int index = 0; index < count; ++index) {
            const Id id = events[static_cast<std::size_t>(index)].data.u64;
            if (id >= firstConnectionId) {
                advance(id);
            } else if (id < listening_.size()) {
                acceptReady(listening_[id]);
            }
        }
    }
}

void OverlayConnections::acceptReady(int listening) {
    for (int turn = 0; turn < acceptsPerRound; ++turn) {
        UniqueFd socket(::accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket.isOpen()) {
            admit(std::move(socket));
        } else if (!survivesAcceptError(listening, errno)) {
            return;
        }
    }
}

/// True when accepting can go on at once.
bool OverlayConnections::survivesAcceptError(int listening, int error) {
    switch (error) {
    case EAGAIN:
        return false;
    case EBADF:
    case EINVAL:
    case ENOTSOCK:
    case EOPNOTSUPP:
        listenerFailed(error);
        return false;
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
        return findDescriptor(listening);
    default:
        return true; // It concerns only the connection that was to be accepted.
    }
}

/// After accepting found no descriptor: true when one was freed for a connection that waits for it.
bool OverlayConnections::findDescriptor(int listening) {
    // The system misses the descriptor before it sees whether there is a connection at all.
    pollfd waiting{listening, POLLIN, 0};
    if (::poll(&waiting, 1, 0) <= 0) {
        return false;
    }
    if (giveUpOldestSilent()) {
        return true;
    }
    pauseAccepting();
    return false;
}

void OverlayConnections::admit(UniqueFd socket) {
    OverlayConnection connection(std::move(socket));
    const Waits waits = connection.advance(handler_);
    if (waits == Waits::ForNothing) {
        return;
    }
    makeRoom();
    const Id id = nextId_++;
    if (!watch(EPOLL_CTL_ADD, connection.socket(), id, waits)) {
        return; // Out of kernel memory: without a place to wait, the connection ends here.
    }
    waiting_.emplace_hint(waiting_.end(), id, Waiting{std::move(connection), Clock::now()});
    if (!sweeper_.isActive()) {
        sweeper_.start();
    }
}

void OverlayConnections::advance(Id id) {
    const auto entry = waiting_.find(id);
    if (entry == waiting_.end()) {
        return; // Given up earlier in this round.
    }
    Waiting& waiting = entry->second;
    const Waits before = waiting.connection.waits();
    const Waits after = waiting.connection.advance(handler_);
    if (after == Waits::ForNothing) {
        remove(entry);
    } else if (after != before) {
        waiting.since = Clock::now();
        if (!watch(EPOLL_CTL_MOD, waiting.connection.socket(), id, after)) {
            remove(entry);
        }
    }
}

void OverlayConnections::remove(WaitingMap::iterator entry) {
    waiting_.erase(entry);
    if (waiting_.empty()) {
        sweeper_.stop();
    }
}

bool OverlayConnections::giveUpOldestSilent() {
    const auto silent = std::find_if(waiting_.begin(), waiting_.end(), [](const auto& entry) {
        return entry.second.connection.waits() == Waits::ForRequest;
    });
    if (silent == waiting_.end()) {
        return false;
    }
    remove(silent);
    return true;
}

void OverlayConnections::makeRoom() {
    if (waiting_.size() >= bound_ && !giveUpOldestSilent()) {
        remove(waiting_.begin());
    }
}

void OverlayConnections::pauseAccepting() {
    unwatchListener();
    acceptAgain_.start();
}

void OverlayConnections::acceptAgain() {
    if (watchListener()) {
        return;
    }
    if (errno == ENOMEM || errno == ENOSPC) {
        pauseAccepting(); // The system has no room for the watching yet.
    } else {
        listenerFailed(errno);
    }
}

void OverlayConnections::sweep() {
    const Clock::time_point now = Clock::now();
    std::erase_if(waiting_, [&](const auto& entry) {
        const Waiting& waiting = entry.second;
        return now - waiting.since > allowance(waiting.connection.waits());
    });
    if (waiting_.empty()) {
        sweeper_.stop();
    }
}

void OverlayConnections::listenerFailed(int error) {
    stopListening();
    handler_.listenerFailed(std::error_code(error, std::generic_category()));
}

bool OverlayConnections::watch(int operation, int socket, Id id, Waits waits) const {
    epoll_event event{};
    event.events = waits == Waits::ForRoomToSend ? EPOLLOUT : EPOLLIN;
    event.data.u64 = id;
    return ::epoll_ctl(epoll_.get(), operation, socket, &event) == 0;
}

std::chrono::milliseconds OverlayConnections::allowance(Waits waits) const {
    switch (waits) {
    case Waits::ForRequest:
        return limits_.silentClient;
    case Waits::ForRoomToSend:
        return limits_.slowReader;
    case Waits::ForClientToClose:
    case Waits::ForNothing:
        break;
    }
    return limits_.lingering;
}

} // namespace orv
