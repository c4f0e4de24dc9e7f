#pragma once

#include <QtGlobal>

#include <memory>

namespace orv {

/// A look at whether anything on this machine uses a TCP or UDP port.
class PortProbe {
  public:
    virtual ~PortProbe() = default;

    /// Blocks until the answer is known. A probe that cannot be made counts as "not in use".
    virtual bool isPortInUse(quint16 port) = 0;
};

/// The probe of this machine.
std::unique_ptr<PortProbe> createSystemPortProbe();

} // namespace orv
