#pragma once

#include <QHash>
#include <QString>

#include <initializer_list>
#include <utility>

namespace orv {

/// Where the cloud services are reached. Each engine knows its provider's public host, always with
/// TLS; whoever tests hands in servers of their own for them. An address is scheme, host and port,
/// without a trailing slash.
class ServiceEndpoints {
  public:
    /// Everything at its public host.
    ServiceEndpoints() = default;

    /// Each pair is a public host and what stands in for it.
    ServiceEndpoints(std::initializer_list<std::pair<QString, QString>> standIns)
        : standIns_(standIns) {}

    /// Where to go for `publicHost`.
    QString at(const QString& publicHost) const { return standIns_.value(publicHost, publicHost); }

  private:
    QHash<QString, QString> standIns_;
};

} // namespace orv
