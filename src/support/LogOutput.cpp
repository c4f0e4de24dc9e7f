#include "LogOutput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace orv {

namespace {

bool takesNow(int descriptor) {
    pollfd entry = {descriptor, POLLOUT, 0};
    return ::poll(&entry, 1, 0) > 0;
}

UniqueFd openedAgain(int descriptor) {
    std::array<char, 32> path = {};
    std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", descriptor);
    return UniqueFd(::open(path.data(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

} // namespace

LogOutput::LogOutput(int descriptor)
    : descriptor_(descriptor) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return;
    }
    if (S_ISSOCK(status.st_mode)) {
        kind_ = Kind::Socket;
    } else if (S_ISFIFO(status.st_mode) || ::isatty(descriptor) != 0) {
        own_ = openedAgain(descriptor);
        kind_ = own_.isOpen() ? Kind::Reopened : Kind::OnRequest;
    }
}

long LogOutput::writeOnce(const char* bytes, std::size_t size) const {
    switch (kind_) {
    case Kind::Socket:
        return ::send(descriptor_, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    case Kind::Reopened:
        return ::write(own_.get(), bytes, size);
    case Kind::OnRequest:
        if (!takesNow(descriptor_)) {
            errno = EAGAIN;
            return -1;
        }
        return ::write(descriptor_, bytes, std::min<std::size_t>(size, PIPE_BUF));
    case Kind::File:
        break;
    }
    return ::write(descriptor_, bytes, size);
}

LogOutput::Outcome LogOutput::write(const char* bytes, std::size_t size) const {
    std::size_t count = 0;
    while (count < size) {
        const long written = writeOnce(bytes + count, size - count);
        if (written >= 0) {
            count += static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            return {State::Full, count};
        } else if (errno != EINTR) {
            return {State::Gone, count};
        }
    }
    return {State::Taken, count};
}

void LogOutput::wait(std::chrono::milliseconds limit, int wake) const {
    std::array<pollfd, 2> entries = {pollfd{own_.isOpen() ? own_.get() : descriptor_, POLLOUT, 0},
                                     pollfd{wake, POLLIN, 0}};
    ::poll(entries.data(), entries.size(), static_cast<int>(limit.count()));
}

} // namespace orv
