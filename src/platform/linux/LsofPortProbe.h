#pragma once

#include "PortProbe.h"

#include <QByteArray>
#include <QString>

#include <chrono>

namespace orv {

/// A port probe that asks `lsof`, a tool that lists what has network ports open. The port is in use
/// exactly when the tool says anything at all; a tool that can't be run says nothing.
class LsofPortProbe : public PortProbe {
  public:
    /// `tool` is an absolute path or a name to be looked up in PATH. A tool that takes longer than
    /// `limit` is ended; it has found the port in use if it has said anything until then, and has
    /// found out nothing else.
    explicit LsofPortProbe(QString tool, std::chrono::milliseconds limit = std::chrono::seconds(1));

    /// "/usr/sbin/lsof" where it is there, else "lsof".
    static QString systemTool();

    std::optional<bool> isPortInUse(quint16 port) override;

  private:
    /// What the tool says; no value when it cannot be heard, or has not been given the time to say
    /// anything.
    std::optional<QByteArray> ask(quint16 port) const;

    QString tool_;
    std::chrono::milliseconds limit_;
};

} // namespace orv
