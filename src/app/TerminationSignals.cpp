#include "TerminationSignals.h"

#include "ThreadChecks.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace orv {

namespace {

constexpr std::array<int, 3> handledSignals = {SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing but statics.
std::atomic<int> writeEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void forwardSignal(int /*number*/) {
    const int saved = errno;
    const char byte = 0;
    // A full pipe means that a request is waiting already.
    [[maybe_unused]] const ssize_t written = ::write(writeEnd.load(), &byte, 1);
    errno = saved;
}

void handle(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : handledSignals) {
        sigaction(number, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent) {
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    readEnd_ = ends[0];
    writeEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        ORV_ON_MAIN();
        std::array<char, 64> bytes = {};
        while (::read(readEnd_, bytes.data(), bytes.size()) > 0) {
        }
        Q_EMIT requested();
    });
    handle(forwardSignal);
}

TerminationSignals::~TerminationSignals() {
    if (readEnd_ < 0) {
        return;
    }
    handle(SIG_DFL);
    notifier_.reset();
    ::close(writeEnd.exchange(-1));
    ::close(readEnd_);
}

} // namespace orv
