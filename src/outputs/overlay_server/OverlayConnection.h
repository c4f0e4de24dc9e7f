#pragma once

#include "UniqueFd.h"

#include <QByteArray>
#include <QByteArrayView>

#include <cstddef>

namespace orv {

class OverlayRequestHandler;

/// Serves one request on one non-blocking socket and then closes it. Told when the socket may be
/// ready; never waits itself. Used on one thread.
///
/// The answer ends with a half-close when the client may still be sending: closing a socket with
/// unread bytes makes the system reset the connection, and the reset can overtake the answer. What
/// still comes is then read and thrown away until the client closes its side.
class OverlayConnection {
  public:
    /// What the connection needs before it can go on.
    enum class Waits { ForRequest, ForRoomToSend, ForClientToClose, ForNothing };

    /// `socket` must be connected and non-blocking.
    explicit OverlayConnection(UniqueFd socket);

    /// Goes as far as it can without waiting. `ForNothing` means that the connection is over, by
    /// its own end or by the client's, and can be destroyed.
    Waits advance(const OverlayRequestHandler& handler);

    Waits waits() const { return waits_; }

    int socket() const { return socket_.get(); }

  private:
    void receiveRequest(const OverlayRequestHandler& handler);
    void sendAnswer();
    void discardRest();

    UniqueFd socket_;
    Waits waits_ = Waits::ForRequest;
    bool clientIsDone_ = false; ///< Nothing more comes from the client before it has the answer.
    QByteArray answer_;
    qsizetype sent_ = 0;
    std::size_t discarded_ = 0;
};

} // namespace orv
