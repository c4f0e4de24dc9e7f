#include "DatagramSender.h"

#include "ThreadChecks.h"

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

DatagramSender::DatagramSender(LookUpHost lookUp)
    : lookups_(std::move(lookUp)) {}

void DatagramSender::send(const Datagram& datagram) {
    ORV_ON_MAIN();
    lookups_.resolve(datagram.host, [this, datagram](const HostAnswer& answer) {
        addressesFound(datagram, answer);
    });
}

void DatagramSender::addressesFound(const Datagram& datagram, const HostAnswer& answer) {
    QString error = answer.error;
    if (error.isEmpty()) {
        QUdpSocket socket;
        error = sendFrom(socket, datagram, preferred(answer.addresses));
    }
    if (!error.isEmpty()) {
        Q_EMIT failed(error);
    }
}

} // namespace orv
