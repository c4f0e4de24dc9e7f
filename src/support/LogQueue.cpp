#include "LogQueue.h"

#include <QByteArray>

#include <array>
#include <charconv>
#include <cstring>
#include <new>
#include <poll.h>
#include <sys/eventfd.h>
#include <utility>

namespace orv {

namespace {

/// The line that stands for those that were left out. Safe in a signal handler.
class LeftOutLine {
  public:
    explicit LeftOutLine(std::uint64_t count) {
        add("⚠️ Ausgabe wurde nicht gelesen - ");
        const auto [end, error] = std::to_chars(text_.data() + size_, text_.end(), count);
        size_ = static_cast<std::size_t>(end - text_.data());
        add(count == 1 ? " Zeile ausgelassen\n" : " Zeilen ausgelassen\n");
    }

    std::string_view bytes() const { return {text_.data(), size_}; }

  private:
    void add(std::string_view part) {
        std::memcpy(text_.data() + size_, part.data(), part.size());
        size_ += part.size();
    }

    std::array<char, 96> text_ = {};
    std::size_t size_ = 0;
};

constexpr std::chrono::milliseconds step{10};
constexpr std::chrono::milliseconds forEver{-1};
constexpr std::chrono::milliseconds betweenLooks{50};

} // namespace

void LogLine::Deleter::operator()(LogLine* line) const {
    line->~LogLine();
    ::operator delete(line);
}

LogLine::Pointer LogLine::make(QStringView text) {
    const QByteArray utf8 = text.toUtf8();
    const auto size = static_cast<std::size_t>(utf8.size());
    Pointer line(new (::operator new(sizeof(LogLine) + size + 1)) LogLine(size + 1));
    std::memcpy(line->text(), utf8.constData(), size);
    line->text()[size] = '\n';
    return line;
}

LogLine::Pointer LogLine::make(std::string_view bytes) {
    Pointer line(new (::operator new(sizeof(LogLine) + bytes.size())) LogLine(bytes.size()));
    bytes.copy(line->text(), bytes.size());
    return line;
}

std::string_view LogLine::bytes() const {
    return {reinterpret_cast<const char*>(this + 1), size_};
}

std::size_t LogLine::cost() const {
    return sizeof(LogLine) + size_;
}

LogQueue::LogQueue(std::size_t room)
    : room_(room)
    , wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , front_(LogLine::make(std::string_view()).release())
    , back_(front_) {}

LogQueue::~LogQueue() {
    while (front_ != nullptr) {
        const LogLine::Pointer line(front_);
        front_ = line->next_.load(std::memory_order_acquire);
    }
}

void LogQueue::push(LogLine::Pointer line) {
    bool wasEmpty = false;
    {
        const std::lock_guard lock(mutex_);
        if (leftOut_ > 0 || (used_ > 0 && used_ + line->cost() > room_)) {
            ++leftOut_;
            return;
        }
        wasEmpty = used_ == 0;
        append(std::move(line));
    }
    if (wasEmpty) {
        wakeWriter();
    }
}

void LogQueue::wakeWriter() const {
    ::eventfd_write(wake_.get(), 1);
}

std::chrono::milliseconds LogQueue::longestWait() const {
    return wake_.isOpen() ? forEver : betweenLooks;
}

void LogQueue::waitForWake(std::chrono::milliseconds limit) const {
    pollfd entry = {wake_.get(), POLLIN, 0};
    ::poll(&entry, 1, static_cast<int>(limit.count()));
}

void LogQueue::noteWoken() const {
    eventfd_t count = 0;
    ::eventfd_read(wake_.get(), &count);
}

void LogQueue::append(LogLine::Pointer line) {
    used_ += line->cost();
    LogLine* const added = line.release();
    back_->next_.store(added, std::memory_order_release);
    back_ = added;
}

void LogQueue::giveBack(std::size_t cost) {
    const std::lock_guard lock(mutex_);
    used_ -= cost;
    if (leftOut_ > 0 && used_ <= room_ / 2) {
        append(LogLine::make(LeftOutLine(leftOut_.exchange(0)).bytes()));
    }
}

bool LogQueue::takeTurn() {
    return !turn_.exchange(true, std::memory_order_acquire);
}

LogOutput::State LogQueue::writeFront(const LogOutput& output, LogLine& line) {
    const std::string_view rest = line.bytes().substr(written_);
    const LogOutput::Outcome outcome = output.write(rest.data(), rest.size());
    written_ = outcome.state == LogOutput::State::Full ? written_ + outcome.count : 0;
    return outcome.state;
}

LogOutput::State LogQueue::writeTo(const LogOutput& output) {
    for (;;) {
        if (!takeTurn()) {
            // The process is about to end.
            return LogOutput::State::Full;
        }
        LogLine* const line = front_->next_.load(std::memory_order_acquire);
        const LogOutput::State state =
            line == nullptr ? LogOutput::State::Taken : writeFront(output, *line);
        const bool finished = line != nullptr && state != LogOutput::State::Full;
        const LogLine::Pointer earlier(finished ? std::exchange(front_, line) : nullptr);
        turn_.store(false, std::memory_order_release);
        if (!finished) {
            return state;
        }
        giveBack(line->cost());
    }
}

bool LogQueue::isEmpty() const {
    return front_->next_.load(std::memory_order_acquire) == nullptr;
}

void LogQueue::writeAfterCrash(const LogOutput& output, std::chrono::milliseconds limit) {
    for (; !takeTurn(); limit -= step) {
        if (limit <= step) {
            return; // The thread that writes is the one that crashed.
        }
        ::poll(nullptr, 0, static_cast<int>(step.count()));
    }
    LogLine* last = front_;
    while (LogLine* const line = last->next_.load(std::memory_order_acquire)) {
        if (writeFront(output, *line) != LogOutput::State::Full) {
            last = line;
        } else if (limit > step) {
            output.wait(step);
            limit -= step;
        } else {
            return;
        }
    }
    if (const std::uint64_t count = leftOut_.load(); count > 0) {
        const LeftOutLine line(count);
        output.write(line.bytes().data(), line.bytes().size());
    }
}

} // namespace orv
