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
class PostTarget;

/// A connection to the speech server. Making it starts connecting; messages sent before that is
/// done leave in order once it is. There is no reconnection: a new run makes a new link.
///
/// The object itself lives on its owner's thread; the socket lives on the link thread.
class BackendLink {
    struct Remote;

  public:
    /// Called on the link thread, once for each message: an empty string when the message has been
    /// handed to the network, else the error.
    using Sent = std::function<void(const QString& error)>;

    /// Whoever is told what comes over the link, on the owner's thread, never after the link has
    /// been cancelled or destroyed. May end the link within a call.
    class Listener {
      public:
        virtual ~Listener() = default;
        virtual void receiveResult(const Result& result) = 0;
        virtual void receiveStatus(const StatusMessage& status) = 0;
        virtual void receiveProcessed() = 0; ///< One more chunk is done with.
        virtual void receiveFlushed() = 0;   ///< The answer to a flush request.
        /// The connection failed or was closed by the peer; nothing follows.
        virtual void linkFailed(const QString& error) = 0;
    };

    struct Timings {
        std::chrono::milliseconds handshake{60000}; ///< Longest wait for the connection.
        std::chrono::milliseconds closing{1000};    ///< Longest wait for the closing handshake.
    };

    /// Bytes that may wait for a peer that reads slowly, or for the connection: four minutes of
    /// speech. Sound that comes on top of them is refused, with an error; what says something about
    /// sound never is.
    static constexpr qint64 mostWaiting = qint64{32} << 20;

    /// Connects to `url`. `thread` and `listener` must outlive the link.
    BackendLink(EventLoopThread& thread, const QUrl& url, Listener& listener, Timings timings);

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
    EventLoopThread& thread_;
    std::unique_ptr<PostTarget> owner_; ///< Where the listener is told; none once cancelled.
    std::shared_ptr<Remote> remote_;
};

} // namespace orv
