#pragma once

#include <QtGlobal>

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
};

/// The probe of this machine.
std::unique_ptr<PortProbe> createSystemPortProbe();

} // namespace orv
