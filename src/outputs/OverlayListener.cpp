#include "OverlayListener.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace orv {

namespace {

/// Connections that the system keeps ready while the server's thread is held up; with Qt's and most
/// systems' smaller default a short stall would already turn polling pages away.
constexpr int backlog = 1024;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

void switchOption(const FileDescriptor& socket, int level, int option, int value) {
    ::setsockopt(socket.number(), level, option, &value, sizeof value);
}

bool bindTo(const FileDescriptor& socket, const sockaddr_storage& address, socklen_t length) {
    return ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), length) == 0;
}

/// Bound to every interface, or closed with `errno` telling why.
FileDescriptor boundSocket(int family, std::uint16_t port) {
    FileDescriptor socket(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) {
        return socket;
    }
    switchOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);

    sockaddr_storage address{};
    socklen_t length = sizeof(sockaddr_in);
    address.ss_family = static_cast<sa_family_t>(family);
    if (family == AF_INET6) {
        switchOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0);
        reinterpret_cast<sockaddr_in6&>(address).sin6_port = htons(port);
        length = sizeof(sockaddr_in6);
    } else {
        reinterpret_cast<sockaddr_in&>(address).sin_port = htons(port);
    }
    if (!bindTo(socket, address, length)) {
        const int error = errno;
        socket.reset();
        errno = error;
    }
    return socket;
}

std::uint16_t boundPort(const FileDescriptor& socket) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    ::getsockname(socket.number(), reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.ss_family == AF_INET6
                     ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                     : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

} // namespace

std::variant<OverlayListener, std::error_code>
OverlayListener::open(std::uint16_t port, std::chrono::seconds deferral) {
    FileDescriptor socket = boundSocket(AF_INET6, port);
    if (!socket.isOpen() && (errno == EAFNOSUPPORT || errno == EADDRNOTAVAIL)) {
        socket = boundSocket(AF_INET, port);
    }
    if (!socket.isOpen()) {
        return lastError();
    }
    if (deferral > std::chrono::seconds::zero()) {
        switchOption(socket, IPPROTO_TCP, TCP_DEFER_ACCEPT, static_cast<int>(deferral.count()));
    }
    if (::listen(socket.number(), backlog) != 0) {
        return lastError();
    }
    const std::uint16_t actualPort = boundPort(socket);
    return OverlayListener(std::move(socket), actualPort);
}

OverlayListener::OverlayListener(FileDescriptor socket, std::uint16_t port)
    : socket_(std::move(socket))
    , port_(port) {}

} // namespace orv
