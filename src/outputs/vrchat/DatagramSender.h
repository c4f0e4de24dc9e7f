#pragma once

#include "EventLoopThread.h"
#include "HostLookups.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orv {

/// One UDP message and where it goes.
struct Datagram {
    QByteArray bytes;
    QString host; ///< A name or a numeric address.
    std::uint16_t port = 0;
};

/// Sends datagrams from a thread of its own, each from a fresh socket. Nobody learns whether one
/// has arrived.
///
/// A name is looked up for each datagram; of several addresses the first IPv4 one is taken, since
/// programs that take datagrams commonly listen there only and no answer would tell of a mistake.
/// Datagrams for numeric addresses leave in the order of sending and never wait for those whose
/// name is still being looked up. When more come than can leave, or than names are found for, the
/// oldest are dropped without a word: at most `maximumWaiting` wait for the thread while it sends
/// as many, and at most `HostLookups::maximumWaiting` wait for names.
class DatagramSender {
  public:
    /// Called on the sender's thread with the reason why a datagram could not be sent.
    using Failed = std::function<void(const QString& error)>;

    static constexpr std::size_t maximumWaiting = 64;

    explicit DatagramSender(Failed failed, LookUpHost lookUp = systemLookUp);

    /// What waits for a name is dropped; whatever else was handed over leaves.
    ~DatagramSender();

    DatagramSender(const DatagramSender&) = delete;
    DatagramSender& operator=(const DatagramSender&) = delete;

    /// Returns at once. Callable from any thread.
    void send(Datagram datagram);

  private:
    void sendWaiting();
    void sendOne(const Datagram& datagram);

    Failed failed_;
    LookUpHost lookUp_;
    std::mutex mutex_;
    std::deque<Datagram> waiting_;         ///< Under the lock.
    std::unique_ptr<HostLookups> lookups_; ///< Of the thread.
    EventLoopThread thread_;
};

} // namespace orv
