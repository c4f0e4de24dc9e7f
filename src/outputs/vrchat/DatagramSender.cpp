#include "DatagramSender.h"

#include <QNetworkProxy>
#include <QUdpSocket>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QHostAddress preferred(const QList<QHostAddress>& addresses) {
    const auto found =
        std::find_if(addresses.begin(), addresses.end(), [](const QHostAddress& one) {
            return one.protocol() == QAbstractSocket::IPv4Protocol;
        });
    return found != addresses.end() ? *found : addresses.value(0);
}

/// The reason of a failure; empty when the datagram has left.
QString sendFrom(QUdpSocket& socket, const Datagram& datagram, const QHostAddress& address) {
    socket.setProxy(QNetworkProxy::NoProxy);
    if (socket.writeDatagram(datagram.bytes, address, datagram.port) == datagram.bytes.size()) {
        return {};
    }
    return socket.errorString();
}

} // namespace

DatagramSender::DatagramSender(Failed failed, LookUpHost lookUp)
    : failed_(std::move(failed))
    , lookUp_(std::move(lookUp))
    , thread_(u"io.tavrin.orv.vrchat"_s) {}

DatagramSender::~DatagramSender() {
    thread_.sync([this] { lookups_.reset(); });
}

void DatagramSender::send(Datagram datagram) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(datagram));
    if (waiting_.size() > maximumWaiting) {
        waiting_.pop_front();
    } else if (waiting_.size() == 1) {
        thread_.post([this] { sendWaiting(); });
    }
}

void DatagramSender::sendWaiting() {
    std::deque<Datagram> taken;
    {
        const std::lock_guard lock(mutex_);
        taken.swap(waiting_);
    }
    for (const Datagram& datagram : taken) {
        sendOne(datagram);
    }
}

void DatagramSender::sendOne(const Datagram& datagram) {
    if (!lookups_) {
        lookups_ = std::make_unique<HostLookups>(lookUp_);
    }
    lookups_->resolve(datagram.host, [this, datagram](const HostAnswer& answer) {
        QString error = answer.error;
        if (error.isEmpty()) {
            QUdpSocket socket;
            error = sendFrom(socket, datagram, preferred(answer.addresses));
        }
        if (!error.isEmpty()) {
            failed_(error);
        }
    });
}

} // namespace orv
