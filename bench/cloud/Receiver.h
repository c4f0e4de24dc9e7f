#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace orv::bench {

using Clock = std::chrono::steady_clock;

/// A streaming service on loopback that only takes the time. Takes any number of connections, on a
/// thread of its own: those that begin with an HTTP request get a WebSocket's handshake, all others
/// are taken to send WebSocket frames from the first byte on. All methods from any thread.
class Receiver {
  public:
    /// Frames with less content are not sound.
    static constexpr std::size_t leastSound = 1000;

    Receiver();
    ~Receiver();

    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    std::uint16_t port() const { return port_; }

    /// When the last byte of the latest frame with sound was taken, on whatever connection.
    Clock::time_point latest() const;

    /// Frames with sound so far, on all connections.
    std::uint64_t count() const;

    /// Waits, without turning in circles meanwhile, until there have been `count` frames with
    /// sound.
    void waitFor(std::uint64_t count) const;

    /// Finished WebSocket handshakes.
    std::uint64_t handshakes() const { return handshakes_.load(); }

    /// Processor time that the thread has used.
    std::chrono::nanoseconds cpuTime() const;

  private:
    struct Client {
        std::string bytes;
        bool begun = false;
    };

    void run();
    void accept();
    bool read(int socket, Client& client);
    void greet(int socket, Client& client);
    bool takeFrame(Client& client, Clock::time_point now);

    int listener_ = -1;
    int stop_[2] = {-1, -1};
    std::uint16_t port_ = 0;
    std::map<int, Client> clients_; ///< Belongs to the thread.
    mutable std::mutex mutex_;
    mutable std::condition_variable counted_;
    Clock::time_point latest_;
    std::uint64_t count_ = 0;
    std::atomic<std::uint64_t> handshakes_ = 0;
    std::thread thread_;
};

/// A connected socket to a port on loopback.
int connectTo(std::uint16_t port);

/// Sends all bytes.
void sendAll(int socket, const std::string& bytes);

} // namespace orv::bench
