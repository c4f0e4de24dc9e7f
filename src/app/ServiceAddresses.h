#pragma once

#include "ServiceEndpoints.h"

#include <QString>
#include <QStringList>

namespace orv {

/// Every address on the network that the program reaches on its own account. The defaults are the
/// real ones; a program that is tested gets servers of its own instead.
struct ServiceAddresses {
    ServiceEndpoints speech = {};
    /// The update manifests, in the order in which they are asked. Build options.
    QStringList updateManifests = {QStringLiteral(ORVANE_UPDATE_PRIMARY "/updates/orv.json"),
                                   QStringLiteral(ORVANE_UPDATE_FALLBACK "/updates/orv.json")};
};

} // namespace orv
