#include "Ports.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orv::test {

namespace {

/// Binds a new socket to `port`, or to one that the system chooses for 0; returns the port bound,
/// or 0 when it is taken.
quint16 bindSocket(int type, quint16 port, int& descriptor) {
    descriptor = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound = ::bind(descriptor, generic, length) == 0 &&
                       ::getsockname(descriptor, generic, &length) == 0;
    return bound ? ntohs(address.sin_port) : quint16{0};
}

bool isFree(int type, quint16 port) {
    int descriptor = -1;
    const bool bound = bindSocket(type, port, descriptor) != 0;
    ::close(descriptor);
    return bound;
}

} // namespace

// Bound, and never listening: a connection is refused as if nobody had the port.
RefusingPort::RefusingPort()
    : port_(bindSocket(SOCK_STREAM, 0, socket_)) {
    EXPECT_NE(port_, 0);
}

RefusingPort::~RefusingPort() {
    ::close(socket_);
}

quint16 freePort() {
    // Below what Linux gives out by itself (from 32768 on). Processes of one time have numbers
    // close together, so that each one begins in a stretch of its own.
    constexpr int first = 12000;
    constexpr int count = 20000;
    constexpr int stretch = 20;
    static int next = ::getpid() % (count / stretch) * stretch;
    for (int tries = 0; tries < count; ++tries) {
        const auto port = static_cast<quint16>(first + next);
        next = (next + 1) % count;
        if (isFree(SOCK_STREAM, port) && isFree(SOCK_DGRAM, port)) {
            return port;
        }
    }
    ADD_FAILURE() << "no port is free";
    return 0;
}

} // namespace orv::test
