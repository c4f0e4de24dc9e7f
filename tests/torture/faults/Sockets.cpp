// The calls on sockets, and those that make descriptors of other kinds.

#include "Next.h"
#include "Transfer.h"

#include <cerrno>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

using faults::next;
using faults::performed;
using faults::Request;
using faults::transfer;

namespace {

const char* familyName(int family) {
    switch (family) {
    case AF_UNIX:
        return "unix";
    case AF_INET:
    case AF_INET6:
        return "inet";
    default:
        return "other";
    }
}

Request onSocket(const char* call, int descriptor, int flags = 0) {
    return {.call = call, .descriptor = descriptor, .isNonblocking = (flags & MSG_DONTWAIT) != 0};
}

} // namespace

extern "C" int socket(int family, int type, int protocol) noexcept {
    return performed({.call = "socket", .subject = familyName(family)},
                     [&] { return next<"socket", decltype(socket)>()(family, type, protocol); });
}

extern "C" int socketpair(int family, int type, int protocol, int* ends) noexcept {
    return performed({.call = "socketpair"}, [&] {
        return next<"socketpair", decltype(socketpair)>()(family, type, protocol, ends);
    });
}

extern "C" int pipe2(int* ends, int flags) noexcept {
    return performed({.call = "pipe"},
                     [&] { return next<"pipe2", decltype(pipe2)>()(ends, flags); });
}

extern "C" int pipe(int* ends) noexcept {
    return performed({.call = "pipe"}, [&] { return next<"pipe", decltype(pipe)>()(ends); });
}

extern "C" int epoll_create1(int flags) noexcept {
    return performed({.call = "epoll_create"},
                     [&] { return next<"epoll_create1", decltype(epoll_create1)>()(flags); });
}

extern "C" int eventfd(unsigned int count, int flags) noexcept {
    return performed({.call = "eventfd"},
                     [&] { return next<"eventfd", decltype(eventfd)>()(count, flags); });
}

extern "C" int connect(int descriptor, const sockaddr* address, socklen_t length) {
    return performed(onSocket("connect", descriptor), [&] {
        return next<"connect", decltype(connect)>()(descriptor, address, length);
    });
}

extern "C" int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
    return performed(onSocket("bind", descriptor),
                     [&] { return next<"bind", decltype(bind)>()(descriptor, address, length); });
}

extern "C" int listen(int descriptor, int backlog) noexcept {
    return performed(onSocket("listen", descriptor),
                     [&] { return next<"listen", decltype(listen)>()(descriptor, backlog); });
}

extern "C" int accept(int descriptor, sockaddr* address, socklen_t* length) {
    return performed(onSocket("accept", descriptor), [&] {
        return next<"accept", decltype(accept)>()(descriptor, address, length);
    });
}

extern "C" int accept4(int descriptor, sockaddr* address, socklen_t* length, int flags) {
    return performed(onSocket("accept", descriptor), [&] {
        return next<"accept4", decltype(accept4)>()(descriptor, address, length, flags);
    });
}

extern "C" ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags) {
    return transfer(onSocket("send", descriptor, flags), size, [&](std::size_t wanted) {
        return next<"send", decltype(send)>()(descriptor, bytes, wanted, flags);
    });
}

extern "C" ssize_t sendto(int descriptor, const void* bytes, std::size_t size, int flags,
                          const sockaddr* address, socklen_t length) {
    return transfer(onSocket("sendto", descriptor, flags), size, [&](std::size_t wanted) {
        return next<"sendto", decltype(sendto)>()(descriptor, bytes, wanted, flags, address,
                                                  length);
    });
}

extern "C" ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
    return transfer(onSocket("sendmsg", descriptor, flags), 1, [&](std::size_t /*wanted*/) {
        return next<"sendmsg", decltype(sendmsg)>()(descriptor, message, flags);
    });
}

extern "C" ssize_t recv(int descriptor, void* bytes, std::size_t size, int flags) {
    return transfer(onSocket("recv", descriptor, flags), size, [&](std::size_t wanted) {
        return next<"recv", decltype(recv)>()(descriptor, bytes, wanted, flags);
    });
}

extern "C" ssize_t recvfrom(int descriptor, void* bytes, std::size_t size, int flags,
                            sockaddr* address, socklen_t* length) {
    return transfer(onSocket("recvfrom", descriptor, flags), size, [&](std::size_t wanted) {
        return next<"recvfrom", decltype(recvfrom)>()(descriptor, bytes, wanted, flags, address,
                                                      length);
    });
}

extern "C" ssize_t recvmsg(int descriptor, msghdr* message, int flags) {
    return transfer(onSocket("recvmsg", descriptor, flags), 1, [&](std::size_t /*wanted*/) {
        return next<"recvmsg", decltype(recvmsg)>()(descriptor, message, flags);
    });
}
