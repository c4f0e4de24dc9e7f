#pragma once

#include "UniqueFd.h"

#include <QByteArray>

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace orv::test {

/// An HTTP client on this machine that can also misbehave. Its calls block, but never longer than
/// the limit that guards against a broken server.
class LoopbackClient {
  public:
    /// How a connection ended, or that it did not.
    enum class End { Closed, Reset, StillOpen };

    /// A client that has its socket but is not connected yet.
    LoopbackClient();

    explicit LoopbackClient(std::uint16_t port)
        : LoopbackClient() {
        connect(port);
    }

    /// Over IPv4.
    bool connect(std::uint16_t port);

    /// Makes the system hold back nearly everything that the client does not read.
    void takeLittleAtATime();

    /// True when all of it was taken.
    bool send(const QByteArray& bytes);

    /// Closes this side only, as a client that has nothing (more) to say.
    void finishSending();

    /// Everything that the server sends until it ends the connection; see `end`.
    QByteArray readAll();

    /// At most this many bytes.
    QByteArray read(std::size_t bytes);

    /// Reads and throws away what comes, until the connection ends or `limit` is over.
    End waitForEnd(std::chrono::milliseconds limit);

    /// How `readAll` stopped.
    End end() const { return end_; }

  private:
    UniqueFd socket_;
    End end_ = End::StillOpen;
};

/// The whole answer to "GET path"; empty when the server cannot be reached.
QByteArray get(std::uint16_t port, const QByteArray& path);

/// What follows the head of an answer.
QByteArray bodyOf(const QByteArray& answer);

} // namespace orv::test
