#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>
#include <optional>

namespace orv {

/// A look at whether anything on this machine uses a TCP or UDP port.
class PortProbe {
  public:
    virtual ~PortProbe() = default;

    /// Returns once the answer is known, or nothing when it could not be found out in time. A probe
    /// that cannot be made counts as "not in use".
    virtual std::optional<bool> isPortInUse(quint16 port) = 0;

    /// Hands the answer of `isPortInUse` to `answered` on the calling thread, at once or, where the
    /// look is made elsewhere, from that thread's event loop. Does not happen any more once the
    /// probe is gone.
    virtual void look(quint16 port, const std::function<void(std::optional<bool>)>& answered) {
        answered(isPortInUse(port));
    }
};

/// The probe of this machine, for the calling thread. It makes a `look` on a thread of its own.
std::unique_ptr<PortProbe> createSystemPortProbe();

} // namespace orv
