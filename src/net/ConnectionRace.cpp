#include "ConnectionRace.h"

#include "ThreadChecks.h"

#include <algorithm>
#include <utility>

namespace orv {

ConnectionRace::ConnectionRace(QList<QHostAddress> addresses, Connect connect,
                               std::chrono::milliseconds headStart)
    : addresses_(std::move(addresses))
    , connect_(std::move(connect))
    , headStart_(headStart) {
    ORV_ON_MAIN();
    next_.setSingleShot(true);
    next_.callOnTimeout(this, &ConnectionRace::tryNext);
}

ConnectionRace::~ConnectionRace() {
    for (const auto& socket : running_) {
        socket->disconnect(this);
        socket->abort();
    }
}

void ConnectionRace::start() {
    ORV_ON_MAIN();
    tryNext();
}

void ConnectionRace::tryNext() {
    if (addresses_.isEmpty()) {
        return;
    }
    running_.push_back(connect_(addresses_.takeFirst()));
    QTcpSocket* const socket = running_.back().get();
    QObject::connect(socket, &QTcpSocket::connected, this, [this, socket] { connected(socket); });
    QObject::connect(socket, &QTcpSocket::errorOccurred, this, [this, socket] { failed(socket); });
    if (!addresses_.isEmpty()) {
        next_.start(headStart_);
    }
}

void ConnectionRace::connected(QTcpSocket* socket) {
    next_.stop();
    addresses_.clear();
    winner_ = take(socket);
    for (const auto& other : running_) {
        other->disconnect(this);
        other->abort();
    }
    running_.clear();
    Q_EMIT won();
}

void ConnectionRace::failed(QTcpSocket* socket) {
    failed_.push_back(take(socket));
    if (!addresses_.isEmpty()) {
        next_.start(0); // Not from inside the socket's own signal.
    } else if (running_.empty()) {
        Q_EMIT lost(socket->errorString());
    }
}

std::unique_ptr<QTcpSocket> ConnectionRace::take(const QTcpSocket* socket) {
    const auto found =
        std::ranges::find(running_, socket, [](const auto& one) { return one.get(); });
    std::unique_ptr<QTcpSocket> taken = std::move(*found);
    running_.erase(found);
    taken->disconnect(this);
    return taken;
}

} // namespace orv
