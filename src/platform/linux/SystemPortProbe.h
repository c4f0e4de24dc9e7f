#pragma once

#include "LsofPortProbe.h"
#include "PortProbe.h"

#include <QString>

namespace orv {

/// A port probe that reads the kernel's tables of sockets, which takes a fraction of a millisecond
/// where there are not very many.
/// The port is in use exactly when a process holds a socket with that port at either end. Where a
/// table cannot be read, `fallback` is asked.
class SystemPortProbe : public PortProbe {
  public:
    /// `tables` is the folder of the tables.
    explicit SystemPortProbe(QString tables = QStringLiteral("/proc/net"),
                             LsofPortProbe fallback = LsofPortProbe(LsofPortProbe::systemTool()));

    std::optional<bool> isPortInUse(quint16 port) override;

  private:
    const QString tables_;
    LsofPortProbe fallback_;
};

} // namespace orv
