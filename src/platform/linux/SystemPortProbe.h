#pragma once

#include "PortProbe.h"

#include <QByteArray>
#include <QString>

#include <chrono>

namespace orv {

/// A port probe that asks `lsof`, a tool that lists what has network ports open. The port is in use
/// exactly when the tool says anything at all; a tool that can't be run says nothing.
class SystemPortProbe : public PortProbe {
  public:
    /// `tool` is an absolute path or a name to be looked up in PATH. A tool that takes longer than
    /// `limit` is ended, and what it has said until then counts.
    explicit SystemPortProbe(QString tool,
                             std::chrono::milliseconds limit = std::chrono::seconds(5));

    /// "/usr/sbin/lsof" where it is there, else "lsof".
    static QString systemTool();

    bool isPortInUse(quint16 port) override;

  private:
    QByteArray ask(quint16 port) const;

    const QString tool_;
    const std::chrono::milliseconds limit_;
};

} // namespace orv
