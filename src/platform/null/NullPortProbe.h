#pragma once

#include "PortProbe.h"

namespace orv {

/// A port probe that sees nothing: every port is free.
class NullPortProbe : public PortProbe {
  public:
    std::optional<bool> isPortInUse(quint16 /*port*/) override { return false; }
};

} // namespace orv
