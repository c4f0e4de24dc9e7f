#include "Subject.h"

#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace faults {

Subject::Subject(const Request& request) {
    add(request.subject);
    if (request.descriptor < 0) {
        return;
    }
    describe(request.descriptor);
    const int flags = ::fcntl(request.descriptor, F_GETFL);
    if (request.isNonblocking || (flags >= 0 && (flags & O_NONBLOCK) != 0)) {
        add("nonblocking");
    }
}

void Subject::describe(int descriptor) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        canFail_ = false;
        return;
    }
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        add("file");
        break;
    case S_IFDIR:
        add("folder");
        break;
    case S_IFIFO:
        add("pipe");
        break;
    case S_IFSOCK:
        describeSocket(descriptor);
        break;
    default:
        canFail_ = false;
    }
}

void Subject::describeSocket(int descriptor) {
    add("socket");
    int value = 0;
    socklen_t length = sizeof value;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &value, &length) == 0) {
        add(value == AF_UNIX ? "unix" : value == AF_INET || value == AF_INET6 ? "inet" : "other");
    }
    length = sizeof value;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &value, &length) == 0) {
        add(value == SOCK_STREAM ? "stream" : "datagram");
    }
}

void Subject::add(const char* word) {
    const std::size_t used = std::strlen(words_.data());
    const std::size_t needed = std::strlen(word) + (used > 0 ? 1 : 0);
    if (*word == '\0' || used + needed >= words_.size()) {
        return;
    }
    if (used > 0) {
        std::strcat(words_.data(), " ");
    }
    std::strcat(words_.data(), word);
}

} // namespace faults
