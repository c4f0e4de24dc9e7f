#pragma once

#include "OverlayConnection.h"
#include "OverlayLimits.h"

#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

namespace orv {

/// Accepts and serves the connections of one listener at a time, inside the event loop of
/// the thread it is created on; everything happens on that thread and nothing blocks it.
///
/// One epoll instance stands behind a single notifier of the event loop, so that the price of a
/// turn does not grow with the number of open connections. A request that has already arrived when
/// its connection is accepted is answered and closed on the spot.
class OverlayConnections {
  public:
    /// The handler outlives the object.
    OverlayConnections(OverlayLimits limits, OverlayRequestHandler& handler);

    OverlayConnections(const OverlayConnections&) = delete;
    OverlayConnections& operator=(const OverlayConnections&) = delete;

    /// False when the system had no descriptor left: nothing can be accepted, ever.
    bool isOpen() const { return epoll_.isOpen(); }

    /// Starts to accept from `sockets` in place of those before. They must be listening and
    /// non-blocking and stay open until `stopListening`.
    void listenOn(std::vector<int> sockets);

    /// Accepts no more. Connections that are open are still served.
    void stopListening();

  private:
    using Id = std::uint64_t;
    using Clock = std::chrono::steady_clock;

    struct Waiting {
        OverlayConnection connection;
        Clock::time_point since; ///< When it began to wait for what it waits for now.
    };

    using WaitingMap = std::map<Id, Waiting>; ///< Ordered by age.

    void serveReady();
    void acceptReady(int listening);
    bool survivesAcceptError(int listening, int error);
    bool findDescriptor(int listening);
    bool watchListener();
    void unwatchListener();
    void admit(UniqueFd socket);
    void advance(Id id);
    void remove(WaitingMap::iterator entry);
    bool giveUpOldestSilent();
    void makeRoom();
    void pauseAccepting();
    void acceptAgain();
    void sweep();
    void listenerFailed(int error);
    bool watch(int operation, int socket, Id id, OverlayConnection::Waits waits) const;
    std::chrono::milliseconds allowance(OverlayConnection::Waits waits) const;

    const OverlayLimits limits_;
    OverlayRequestHandler& handler_;
    const std::size_t bound_;
    const UniqueFd epoll_;
    std::vector<int> listening_; ///< The place of a socket is its identifier.
    Id nextId_;
    WaitingMap waiting_;
    QSocketNotifier ready_;
    QTimer sweeper_;
    QTimer acceptAgain_;
};

} // namespace orv
