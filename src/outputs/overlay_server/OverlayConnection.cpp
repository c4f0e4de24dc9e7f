#include "OverlayConnection.h"

#include "HttpRequest.h"
#include "OverlayRequestHandler.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace orv {

namespace {

/// A client that sends more than this after its request is not worth its answer.
constexpr std::size_t mostDiscardedBytes = std::size_t{16} << 20;

/// Lets other connections have their turn while one client keeps sending.
constexpr int discardsPerTurn = 16;

bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

template <typename Call>
ssize_t uninterrupted(Call call) {
    ssize_t result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace

OverlayConnection::OverlayConnection(UniqueFd socket)
    : socket_(std::move(socket)) {}

OverlayConnection::Waits OverlayConnection::advance(const OverlayRequestHandler& handler) {
    if (waits_ == Waits::ForRequest) {
        receiveRequest(handler);
    }
    if (waits_ == Waits::ForRoomToSend) {
        sendAnswer();
    }
    if (waits_ == Waits::ForClientToClose) {
        discardRest();
    }
    return waits_;
}

void OverlayConnection::receiveRequest(const OverlayRequestHandler& handler) {
    std::array<char, httpFirstReadBytes> buffer; // NOLINT(*-init-variables): filled by recv
    const ssize_t received =
        uninterrupted([&] { return ::recv(socket_.get(), buffer.data(), buffer.size(), 0); });
    if (received < 0) {
        waits_ = wouldBlock() ? Waits::ForRequest : Waits::ForNothing;
        return;
    }
    const QByteArrayView firstRead(buffer.data(), static_cast<qsizetype>(received));
    clientIsDone_ = firstRead.isEmpty() || isWholeRequest(firstRead);
    answer_ = handler.answerTo(requestPath(firstRead));
    waits_ = Waits::ForRoomToSend;
}

void OverlayConnection::sendAnswer() {
    while (sent_ < answer_.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::send(socket_.get(), answer_.constData() + sent_,
                          static_cast<std::size_t>(answer_.size() - sent_), MSG_NOSIGNAL);
        });
        if (count < 0) {
            waits_ = wouldBlock() ? Waits::ForRoomToSend : Waits::ForNothing;
            return;
        }
        sent_ += count;
    }
    if (clientIsDone_ || ::shutdown(socket_.get(), SHUT_WR) != 0) {
        waits_ = Waits::ForNothing;
    } else {
        waits_ = Waits::ForClientToClose;
    }
}

void OverlayConnection::discardRest() {
    std::array<char, 16384> buffer; // NOLINT(*-init-variables): filled by recv
    for (int turn = 0; turn < discardsPerTurn; ++turn) {
        const ssize_t received =
            uninterrupted([&] { return ::recv(socket_.get(), buffer.data(), buffer.size(), 0); });
        if (received < 0 && wouldBlock()) {
            return;
        }
        if (received > 0) {
            discarded_ += static_cast<std::size_t>(received);
        }
        if (received <= 0 || discarded_ > mostDiscardedBytes) {
            waits_ = Waits::ForNothing;
            return;
        }
    }
}

} // namespace orv
