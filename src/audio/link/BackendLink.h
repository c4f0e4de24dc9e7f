#pragma once

#include "BackendMessages.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

namespace orv {

class BackendSocket;
class EventLoopThread;

/// One connection to the speech server. Opening it starts connecting; messages sent before that is
/// done leave in order once it is. There is no reconnection: a new run makes a new link.
///
/// The object itself lives on its owner's thread; the socket lives on the link thread.
class BackendLink {
    struct Remote;

  public:
    /// Called on the link thread, once for each message: an empty string when the message has been
    /// handed to the network, else the error.
    using Sent = std::function<void(const QString& error)>;

    /// Called on the owner's thread, never after the link has been cancelled or destroyed.
    struct Handlers {
        std::function<void(const DownstreamMessage& message)> message;
        /// The connection failed or was closed by the peer; nothing follows.
        std::function<void(const QString& error)> failed;
    };

    struct Timings {
        std::chrono::milliseconds handshake{60000}; ///< Longest wait for the connection.
        std::chrono::milliseconds closing{1000};    ///< Longest wait for the closing handshake.
    };

    /// Connects to `url`. `thread` must outlive the link.
    BackendLink(EventLoopThread& thread, const QUrl& url, Handlers handlers, Timings timings);

    /// Cancels.
    ~BackendLink();

    BackendLink(const BackendLink&) = delete;
    BackendLink& operator=(const BackendLink&) = delete;

    /// Sends text frames over a link without keeping it. Copies may go to any thread; the link
    /// thread must outlive them.
    class Sender {
      public:
        Sender() = default;

        /// Sends one text frame, in the order of the calls. False, and nothing else happens, when
        /// the link has been cancelled or there never was one.
        bool send(QByteArray message, Sent sent = {}) const;

      private:
        friend class BackendLink;
        EventLoopThread* thread_ = nullptr;
        std::shared_ptr<Remote> remote_;
    };

    Sender sender() const;

    /// Closes with code 1001 (going away) and no reason. Messages sent before still leave, within
    /// the closing time. Harmless when closed already.
    void cancel();

  private:
    struct Owner;

    EventLoopThread& thread_;
    std::unique_ptr<Owner> owner_;
    std::shared_ptr<Remote> remote_;
};

} // namespace orv
