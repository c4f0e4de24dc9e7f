#include "ThreadedPortProbe.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

ThreadedPortProbe::ThreadedPortProbe(std::unique_ptr<PortProbe> probe)
    : probe_(std::move(probe))
    , elsewhere_(u"io.tavrin.orv.port"_s) {}

ThreadedPortProbe::~ThreadedPortProbe() = default;

std::optional<bool> ThreadedPortProbe::isPortInUse(quint16 port) {
    return probe_->isPortInUse(port);
}

void ThreadedPortProbe::look(quint16 port,
                             const std::function<void(std::optional<bool>)>& answered) {
    elsewhere_.post([this, port, home = home_.handle(), answered = answered]() mutable {
        home.post([answered = std::move(answered), found = probe_->isPortInUse(port)] {
            answered(found);
        });
    });
}

} // namespace orv
