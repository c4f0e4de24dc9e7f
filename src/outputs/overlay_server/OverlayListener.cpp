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

void switchOption(const UniqueFd& socket, int level, int option, int value) {
    ::setsockopt(socket.get(), level, option, &value, sizeof value);
}

/// The address of every interface.
sockaddr_storage anyAddress(int family, std::uint16_t port) {
    sockaddr_storage address{};
    address.ss_family = static_cast<sa_family_t>(family);
    if (family == AF_INET6) {
        reinterpret_cast<sockaddr_in6&>(address).sin6_port = htons(port);
    } else {
        reinterpret_cast<sockaddr_in&>(address).sin_port = htons(port);
    }
    return address;
}

/// Listens, or is closed with `errno` telling why.
UniqueFd listeningSocket(int family, std::uint16_t port, std::chrono::seconds deferral) {
    UniqueFd socket(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) {
        return socket;
    }
    switchOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    if (family == AF_INET6) {
        switchOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 1);
    }
    if (deferral > std::chrono::seconds::zero()) {
        switchOption(socket, IPPROTO_TCP, TCP_DEFER_ACCEPT, static_cast<int>(deferral.count()));
    }
    const sockaddr_storage address = anyAddress(family, port);
    const socklen_t length = family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::listen(socket.get(), backlog) != 0) {
        const int error = errno;
        socket.reset();
        errno = error;
    }
    return socket;
}

std::uint16_t boundPort(const UniqueFd& socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

} // namespace

std::variant<OverlayListener, std::error_code>
OverlayListener::open(std::uint16_t port, std::chrono::seconds deferral) {
    std::vector<UniqueFd> sockets;
    sockets.push_back(listeningSocket(AF_INET, port, deferral));
    if (!sockets.front().isOpen()) {
        return lastError();
    }
    const std::uint16_t actualPort = boundPort(sockets.front());
    sockets.push_back(listeningSocket(AF_INET6, actualPort, deferral));
    if (!sockets.back().isOpen()) {
        const bool hasNoIpv6 = errno == EAFNOSUPPORT || errno == EADDRNOTAVAIL;
        if (!hasNoIpv6) {
            return lastError();
        }
        sockets.pop_back();
    }
    return OverlayListener(std::move(sockets), actualPort);
}

OverlayListener::OverlayListener(std::vector<UniqueFd> sockets, std::uint16_t port)
    : sockets_(std::move(sockets))
    , port_(port) {}

std::vector<int> OverlayListener::sockets() const {
    std::vector<int> numbers;
    numbers.reserve(sockets_.size());
    for (const UniqueFd& socket : sockets_) {
        numbers.push_back(socket.get());
    }
    return numbers;
}

} // namespace orv
