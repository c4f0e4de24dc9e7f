#pragma once

#include "UniqueFd.h"

#include <chrono>
#include <cstdint>
#include <system_error>
#include <variant>
#include <vector>

namespace orv {

/// Listens for TCP on one port of every interface, over IPv4 and, where the system has it, IPv6.
/// Each has a socket of its own: IPv4 through an IPv6 socket costs a tenth of the requests.
class OverlayListener {
  public:
    /// The listener, or why there is none: the port is in use, not permitted, or the system has no
    /// sockets left. A port that was used a moment ago can be taken again; one that another
    /// program listens on cannot. Port 0 lets the system choose one.
    ///
    /// The system holds a new connection back for `deferral` while its first bytes (or the client's
    /// half-close) are missing. Accepting then finds the request already there, which spares a
    /// wait for it; a client that stays silent is handed over after that time like any other.
    static std::variant<OverlayListener, std::error_code> open(std::uint16_t port,
                                                               std::chrono::seconds deferral);

    /// One or two, non-blocking.
    std::vector<int> sockets() const;

    std::uint16_t port() const { return port_; }

  private:
    OverlayListener(std::vector<UniqueFd> sockets, std::uint16_t port);

    std::vector<UniqueFd> sockets_;
    std::uint16_t port_;
};

} // namespace orv
