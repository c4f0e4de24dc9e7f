#include "Receiver.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

namespace orv::bench {

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

QByteArray acceptKey(const QByteArray& request) {
    const QByteArray header = "sec-websocket-key:";
    const qsizetype begin = request.toLower().indexOf(header) + header.size();
    QByteArray key = request.mid(begin, request.indexOf("\r\n", begin) - begin).trimmed();
    key.append("258EAFA5-E914-47DA-95CA-C5AB0DC85B11");
    return QCryptographicHash::hash(key, QCryptographicHash::Sha1).toBase64();
}

} // namespace

int connectTo(std::uint16_t port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (socket < 0 ||
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        fail("connect");
    }
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return socket;
}

void sendAll(int socket, const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t now = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (now < 0) {
            fail("send");
        }
        sent += static_cast<std::size_t>(now);
    }
}

Receiver::Receiver() {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (listener_ < 0 ||
        ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        ::listen(listener_, 16) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        ::pipe(stop_) != 0) {
        fail("listen");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
}

Receiver::~Receiver() {
    ::close(stop_[1]);
    thread_.join();
    ::close(stop_[0]);
    ::close(listener_);
}

Clock::time_point Receiver::latest() const {
    const std::lock_guard lock(mutex_);
    return latest_;
}

std::uint64_t Receiver::count() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

void Receiver::waitFor(std::uint64_t count) const {
    std::unique_lock lock(mutex_);
    counted_.wait(lock, [this, count] { return count_ >= count; });
}

std::chrono::nanoseconds Receiver::cpuTime() const {
    clockid_t clock = {};
    timespec time = {};
    if (::pthread_getcpuclockid(const_cast<std::thread&>(thread_).native_handle(), &clock) != 0 ||
        ::clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("no processor time");
    }
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void Receiver::run() {
    for (;;) {
        std::vector<pollfd> watched = {{stop_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
        for (const auto& [socket, client] : clients_) {
            watched.push_back({socket, POLLIN, 0});
        }
        ::poll(watched.data(), watched.size(), -1);
        if (watched[0].revents != 0) {
            break;
        }
        if (watched[1].revents != 0) {
            accept();
        }
        for (std::size_t i = 2; i < watched.size(); ++i) {
            const int socket = watched[i].fd;
            if (watched[i].revents != 0 && !read(socket, clients_[socket])) {
                ::close(socket);
                clients_.erase(socket);
            }
        }
    }
    for (const auto& [socket, client] : clients_) {
        ::close(socket);
    }
}

void Receiver::accept() {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket >= 0) {
        clients_[socket] = {};
    }
}

bool Receiver::read(int socket, Client& client) {
    static thread_local std::array<char, 65536> buffer;
    const ssize_t taken = ::recv(socket, buffer.data(), buffer.size(), 0);
    const Clock::time_point now = Clock::now();
    if (taken <= 0) {
        return false;
    }
    client.bytes.append(buffer.data(), static_cast<std::size_t>(taken));
    if (!client.begun) {
        greet(socket, client);
    }
    while (client.begun && takeFrame(client, now)) {
    }
    return true;
}

void Receiver::greet(int socket, Client& client) {
    if (client.bytes.front() != 'G') {
        client.begun = true;
        return;
    }
    const std::size_t end = client.bytes.find("\r\n\r\n");
    if (end == std::string::npos) {
        return;
    }
    constexpr std::string_view session =
        R"({"message_type":"SessionBegins","session_id":"1","expires_at":""})";
    std::string answer = "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                         "Connection: Upgrade\r\nSec-WebSocket-Accept: " +
                         acceptKey(QByteArray::fromStdString(client.bytes)).toStdString() +
                         "\r\n\r\n";
    answer += '\x81';
    answer += static_cast<char>(session.size());
    answer += session;
    client.bytes.erase(0, end + 4);
    client.begun = true;
    sendAll(socket, answer);
    ++handshakes_;
}

/// Takes one whole frame off the bytes, if there is one. Clients' frames are always masked.
bool Receiver::takeFrame(Client& client, Clock::time_point now) {
    const auto byte = [&client](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(client.bytes[i]));
    };
    if (client.bytes.size() < 2) {
        return false;
    }
    std::size_t size = byte(1) & 0x7FU;
    std::size_t header = 6;
    if (size >= 126) {
        const std::size_t lengthBytes = size == 126 ? 2 : 8;
        header += lengthBytes;
        if (client.bytes.size() < header) {
            return false;
        }
        size = 0;
        for (std::size_t i = 0; i < lengthBytes; ++i) {
            size = size << 8U | byte(2 + i);
        }
    }
    if (client.bytes.size() < header + size) {
        return false;
    }
    client.bytes.erase(0, header + size);
    if (size >= leastSound) {
        {
            const std::lock_guard lock(mutex_);
            latest_ = now;
            ++count_;
        }
        counted_.notify_all();
    }
    return true;
}

} // namespace orv::bench
