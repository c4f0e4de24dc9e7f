// Many overlay pages at once: each asks a server on this machine for "/text" at a fixed interval,
// over a connection of its own each time, as a browser does when the answer says "close".
//
//   orvane_overlay_bench_pages PORT PAGES INTERVAL_MS SECONDS
//
// Prints one JSON object: polls, errors, late polls, and the time from the start of the connection
// to the end of the answer in milliseconds. A poll fails when the connection does, when the answer
// is not a complete one with status 200, or when it takes longer than five seconds. It is late when
// the one before it is still under way at its time, and is then left out.

#include "UniqueFd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <queue>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using orv::UniqueFd;

constexpr std::chrono::seconds longestPoll{5};
constexpr std::string_view request = "GET /text HTTP/1.1\r\nHost: localhost\r\nAccept: */*\r\n\r\n";

struct Page {
    UniqueFd socket;
    bool isRequestSent = false;
    std::string answer;
    Clock::time_point begun;
};

struct Due {
    Clock::time_point at;
    std::size_t page;

    bool operator>(const Due& other) const { return at > other.at; }
};

/// Status 200 and as much body as the head announces.
bool isComplete(std::string_view answer) {
    constexpr std::string_view lengthName = "Content-Length: ";
    const std::size_t headEnd = answer.find("\r\n\r\n");
    const std::size_t length = answer.find(lengthName);
    if (!answer.starts_with("HTTP/1.1 200 OK\r\n") || headEnd == std::string_view::npos ||
        length > headEnd) {
        return false;
    }
    std::size_t announced = 0;
    std::from_chars(answer.data() + length + lengthName.size(), answer.data() + headEnd, announced);
    const std::string_view body = answer.substr(headEnd + 4);
    return announced > 0 && body.size() == announced && body.front() == '{' && body.back() == '}';
}

class Pages {
  public:
    Pages(std::uint16_t port, std::size_t count)
        : epoll_(::epoll_create1(EPOLL_CLOEXEC))
        , pages_(count) {
        server_.sin_family = AF_INET;
        server_.sin_port = htons(port);
        server_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }

    void run(std::chrono::milliseconds interval, std::chrono::seconds length) {
        const Clock::time_point start = Clock::now();
        std::priority_queue<Due, std::vector<Due>, std::greater<>> due;
        for (std::size_t page = 0; page < pages_.size(); ++page) {
            due.push({start + interval * page / pages_.size(), page});
        }
        while (Clock::now() < start + length || underWay_ > 0) {
            while (due.top().at <= Clock::now()) {
                const Due next = due.top();
                due.pop();
                due.push({next.at + interval, next.page});
                if (next.at < start + length) {
                    poll(next.page);
                } else {
                    giveUpIfTooOld(next.page);
                }
            }
            serve(due.top().at);
        }
    }

    void print() {
        std::sort(milliseconds_.begin(), milliseconds_.end());
        const auto percentile = [this](double part) {
            const auto last = static_cast<double>(milliseconds_.size() - 1);
            return milliseconds_.empty() ? 0.0
                                         : milliseconds_[static_cast<std::size_t>(last * part)];
        };
        std::cout << R"({"polls": )" << polls_ << R"(, "errors": )" << errors_ << R"(, "late": )"
                  << late_ << R"(, "p50": )" << percentile(0.5) << R"(, "p99": )"
                  << percentile(0.99) << R"(, "max": )" << percentile(1) << "}" << std::endl;
    }

  private:
    void poll(std::size_t index) {
        Page& page = pages_[index];
        giveUpIfTooOld(index);
        if (page.socket.isOpen()) {
            ++late_;
            return;
        }
        ++polls_;
        ++underWay_;
        page = {UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)),
                false,
                {},
                Clock::now()};
        epoll_event event{};
        event.events = EPOLLOUT;
        event.data.u64 = index;
        const auto* address = reinterpret_cast<const sockaddr*>(&server_);
        const bool isConnecting =
            ::connect(page.socket.get(), address, sizeof server_) == 0 || errno == EINPROGRESS;
        if (!isConnecting ||
            ::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, page.socket.get(), &event) != 0) {
            finish(page, false);
        }
    }

    void giveUpIfTooOld(std::size_t index) {
        Page& page = pages_[index];
        if (page.socket.isOpen() && Clock::now() - page.begun > longestPoll) {
            finish(page, false);
        }
    }

    void serve(Clock::time_point until) {
        std::array<epoll_event, 256> events{};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        const int count = ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()),
                                       static_cast<int>(std::max<std::int64_t>(0, left.count())));
        for (int index = 0; index < count; ++index) {
            const std::uint64_t page = events[static_cast<std::size_t>(index)].data.u64;
            advance(pages_[page], page);
        }
    }

    void advance(Page& page, std::uint64_t index) {
        if (!page.isRequestSent) {
            epoll_event event{};
            event.events = EPOLLIN;
            event.data.u64 = index;
            page.isRequestSent = true;
            const ssize_t sent =
                ::send(page.socket.get(), request.data(), request.size(), MSG_NOSIGNAL);
            if (sent != static_cast<ssize_t>(request.size()) ||
                ::epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, page.socket.get(), &event) != 0) {
                finish(page, false);
            }
            return;
        }
        std::array<char, 4096> buffer{};
        const ssize_t received = ::recv(page.socket.get(), buffer.data(), buffer.size(), 0);
        if (received > 0) {
            page.answer.append(buffer.data(), static_cast<std::size_t>(received));
        } else if (received == 0) {
            finish(page, isComplete(page.answer));
        } else if (errno != EAGAIN) {
            finish(page, false);
        }
    }

    void finish(Page& page, bool isGood) {
        page.socket.reset();
        --underWay_;
        if (isGood) {
            const std::chrono::duration<double, std::milli> taken = Clock::now() - page.begun;
            milliseconds_.push_back(taken.count());
        } else {
            ++errors_;
        }
    }

    sockaddr_in server_{};
    const UniqueFd epoll_;
    std::vector<Page> pages_;
    std::vector<double> milliseconds_;
    std::size_t polls_ = 0;
    std::size_t errors_ = 0;
    std::size_t late_ = 0;
    std::size_t underWay_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: " << argv[0] << " PORT PAGES INTERVAL_MS SECONDS" << std::endl;
        return EXIT_FAILURE;
    }
    Pages pages(static_cast<std::uint16_t>(std::stoul(argv[1])), std::stoul(argv[2]));
    pages.run(std::chrono::milliseconds(std::stol(argv[3])),
              std::chrono::seconds(std::stol(argv[4])));
    pages.print();
    return EXIT_SUCCESS;
}
