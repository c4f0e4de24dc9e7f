#pragma once

#include "BackendMessages.h"
#include "Result.h"

#include <QList>

#include <optional>

namespace orv {

/// What the speech server has told, or a service in its place, and what of it still holds. A plain
/// value.
struct BackendNews {
    /// Told last. A direct engine's word takes its place, too, which has no code.
    StatusMessage latest = {};
    /// Who serves, and what there is to tell about them; none before that is known.
    std::optional<StatusMessage> serving = {};
    /// Errors and warnings since then, in order, the latest of each code; a service's faults carry
    /// how often they have come, as the parameter "times".
    QList<StatusMessage> disturbances = {};

    /// Another run: nothing of the one before holds any more.
    void beginRun();

    /// The server tells something. Who serves is told anew when a disturbance is over.
    void take(const StatusMessage& status);

    /// A service has brought a result: what kept it from that is over, and with a translation what
    /// kept that away, too.
    void serviceServes(const Result& result);

    /// The latest error that still holds, or null.
    const StatusMessage* error() const;

    friend bool operator==(const BackendNews&, const BackendNews&) = default;
};

} // namespace orv
