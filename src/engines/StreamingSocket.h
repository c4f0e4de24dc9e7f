#pragma once

#include "Completion.h"
#include "EngineTimings.h"
#include "ServiceFault.h"
#include "WebSocketFrame.h"

#include <QByteArray>
#include <QNetworkRequest>
#include <QString>

#include <memory>

namespace orv {

/// A WebSocket to a streaming service, for coroutines. Opens at once; what is sent before the
/// service has accepted waits for that. Lives on the main thread.
class StreamingSocket {
  public:
    struct Message {
        enum class Kind {
            Text,
            Binary,  ///< Without its content, which no service uses.
            Failure, ///< The connection is over; there will be no other message.
        };

        Kind kind = Kind::Failure;
        QString text; ///< Of a text message; of a failure the reason, without any key.
        /// Of a failure: how far it had come.
        ServiceFault::Kind fault = ServiceFault::Kind::NetworkFailed;
        int closeCode = 0;        ///< Of a failure by the service's close frame; else 0.
        QString closeReason = {}; ///< With it.
    };

    explicit StreamingSocket(const QNetworkRequest& request, EngineTimings timings = {});

    /// Ends the connection. Whoever still waits gets a failure inside the destructor.
    ~StreamingSocket();

    StreamingSocket(const StreamingSocket&) = delete;
    StreamingSocket& operator=(const StreamingSocket&) = delete;

    /// The next message; never there at once. One reader at a time.
    Completion<Message> receive();

    /// Ends the wait of `receive`, if there still is one, with a failure, though not inside this
    /// call. The connection goes on.
    void stopReceiving();

    /// Sends one message. The outcome is empty once the network has taken every byte, else an
    /// error.
    Completion<QString> sendText(const QString& text);

    /// The same for a block of sound, as one frame and without a detour. Text is UTF-8.
    Completion<QString> sendSound(WebSocketFrameKind kind, const QByteArray& payload);

    /// Whether the service has taken the connection, be it open still or not.
    bool wasAccepted() const;

    /// Whether it still is.
    bool isOpen() const;

    /// From now on everything must be through within `EngineTimings::streamFarewell`.
    void hurry();

    /// After that, and once: the service gets `EngineTimings::lastResults` for what it still has to
    /// say, and the reader a failure then.
    void awaitEnd();

    /// Closes with code 1001, going away. The reader gets a failure, though not inside this call.
    void close();

  private:
    class Connection;

    std::shared_ptr<Connection> connection_;
};

} // namespace orv
