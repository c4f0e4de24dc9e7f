#include "LoopbackClient.h"

#include <QStringBuilder>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace orv::test {

namespace {

constexpr std::chrono::seconds patience{20};

void limitReceiving(int socket, std::chrono::milliseconds limit) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(limit);
    timeval time{};
    time.tv_sec = seconds.count();
    time.tv_usec = std::chrono::microseconds(limit - seconds).count();
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

} // namespace

LoopbackClient::LoopbackClient()
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    limitReceiving(socket_.get(), patience);
}

bool LoopbackClient::connect(std::uint16_t port) {
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0;
}

void LoopbackClient::takeLittleAtATime() {
    const int bytes = 1;
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

bool LoopbackClient::send(const QByteArray& bytes) {
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket_.get(), bytes.constData() + sent,
                                     static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += count;
    }
    return true;
}

void LoopbackClient::finishSending() {
    ::shutdown(socket_.get(), SHUT_WR);
}

QByteArray LoopbackClient::readAll() {
    QByteArray all;
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = ::recv(socket_.get(), buffer.data(), buffer.size(), 0)) > 0) {
        all.append(buffer.data(), count);
    }
    const bool isTimeOut = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    end_ = count == 0 ? End::Closed : isTimeOut ? End::StillOpen : End::Reset;
    return all;
}

QByteArray LoopbackClient::read(std::size_t bytes) {
    QByteArray part(static_cast<qsizetype>(bytes), Qt::Uninitialized);
    part.resize(std::max<ssize_t>(0, ::recv(socket_.get(), part.data(), bytes, 0)));
    return part;
}

LoopbackClient::End LoopbackClient::waitForEnd(std::chrono::milliseconds limit) {
    limitReceiving(socket_.get(), limit);
    readAll();
    limitReceiving(socket_.get(), patience);
    return end_;
}

QByteArray get(std::uint16_t port, const QByteArray& path) {
    LoopbackClient client;
    if (!client.connect(port)) {
        return {};
    }
    client.send("GET " + path + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
    return client.readAll();
}

QByteArray bodyOf(const QByteArray& answer) {
    const qsizetype headEnd = answer.indexOf("\r\n\r\n");
    return headEnd < 0 ? QByteArray() : answer.mid(headEnd + 4);
}

} // namespace orv::test
