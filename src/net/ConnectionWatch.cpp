#include "ConnectionWatch.h"

#include <QSslSocket>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace orv {

namespace {

constexpr int sendBuffer = 64 << 10;

template <typename T>
void setOption(const QAbstractSocket& socket, int level, int option, T value) {
    const auto descriptor = socket.socketDescriptor();
    if (descriptor >= 0) {
        // Without it the program works as before; there is nothing that anybody could do.
        setsockopt(static_cast<int>(descriptor), level, option, &value, sizeof value);
    }
}

} // namespace

void endConnectionWhenUnheard(const QAbstractSocket& socket, std::chrono::milliseconds patience) {
    setOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, static_cast<unsigned int>(patience.count()));
}

void limitSendBuffer(const QAbstractSocket& socket) {
    setOption(socket, SOL_SOCKET, SO_SNDBUF, sendBuffer);
}

qint64 bytesNotTaken(const QTcpSocket& socket) {
    const auto* secure = qobject_cast<const QSslSocket*>(&socket);
    return socket.bytesToWrite() + (secure != nullptr ? secure->encryptedBytesToWrite() : 0);
}

} // namespace orv
