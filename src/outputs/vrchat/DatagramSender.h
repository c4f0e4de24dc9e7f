#pragma once

#include "HostLookups.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>

namespace orv {

/// One UDP message and where it goes.
struct Datagram {
    QByteArray bytes;
    QString host; ///< A name or a numeric address.
    std::uint16_t port = 0;
};

/// Sends datagrams, each from a fresh socket. Nobody learns whether one has arrived. Lives on the
/// main thread; sending waits neither for a name nor for the network.
///
/// A name is looked up for each datagram; of several addresses the first IPv4 one is taken, since
/// programs that take datagrams commonly listen there only and no answer would tell of a mistake.
/// Datagrams for numeric addresses leave in the order of sending and never wait for those whose
/// name is still being looked up. When more come than names are found for, the oldest are dropped
/// without a word: at most `HostLookups::maximumWaiting` wait. A datagram that the system has no
/// room for is dropped, with the signal.
class DatagramSender : public QObject {
    Q_OBJECT

  public:
    /// What waits for a name when the object goes is dropped.
    explicit DatagramSender(LookUpHost lookUp = systemLookUp);

    /// To a numeric address the datagram leaves within the call.
    void send(const Datagram& datagram);

  Q_SIGNALS:
    /// Why a datagram could not be sent.
    void failed(const QString& error);

  private:
    void addressesFound(const Datagram& datagram, const HostAnswer& answer);

    HostLookups lookups_;
};

} // namespace orv
