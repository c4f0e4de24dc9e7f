#pragma once

#include <chrono>
#include <cstddef>

namespace orv {

/// What one client may cost the overlay server. The times are kept to within `sweep`.
struct OverlayLimits {
    std::chrono::milliseconds silentClient{10'000}; ///< For the first byte of a request.
    std::chrono::milliseconds slowReader{10'000};   ///< For taking the answer.
    std::chrono::milliseconds lingering{2'000};     ///< For closing after the answer.
    std::chrono::milliseconds sweep{250};           ///< How often the three above are looked at.

    /// How long the system itself may hold back a connection that says nothing; see
    /// `OverlayListener`. It adds to `silentClient`.
    std::chrono::seconds acceptDeferral{1};

    /// How long accepting pauses when the system has nothing left to accept with and no silent
    /// connection could be given up for it.
    std::chrono::milliseconds acceptPause{100};

    /// Connections that may be waiting for their client at the same time, at most half of the file
    /// descriptors that the process may have. When they are reached, the one that has been silent
    /// for longest goes first.
    std::size_t waitingConnections = 2000;
};

/// `limits.waitingConnections`, bounded by half of the `descriptors` that the process may open, so
/// that an overlay port full of silent clients leaves the rest of the program its files. At
/// least 1.
std::size_t waitingConnectionBound(const OverlayLimits& limits, std::size_t descriptors);

} // namespace orv
