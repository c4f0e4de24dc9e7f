#pragma once

#include "LogOutput.h"
#include "UniqueFd.h"

#include <QStringView>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

namespace orv {

/// A line of the log in UTF-8, its line feed included, on its way to the output. Its bytes stand
/// behind it in the same block of memory, so that a line costs what it is long.
class LogLine {
  public:
    struct Deleter {
        void operator()(LogLine* line) const;
    };

    using Pointer = std::unique_ptr<LogLine, Deleter>;

    static Pointer make(QStringView text);
    /// `bytes` as they are.
    static Pointer make(std::string_view bytes);

    std::string_view bytes() const;

    /// What it takes of a queue's room.
    std::size_t cost() const;

  private:
    friend class LogQueue;

    explicit LogLine(std::size_t size)
        : size_(size) {}

    char* text() { return reinterpret_cast<char*>(this + 1); }

    std::size_t size_;
    std::atomic<LogLine*> next_ = nullptr;
};

/// Lines that wait for the log's reader: any number of threads put some in, one writes them out.
/// While the queue is full, the newest lines are left out and counted; once half of the room is
/// free again, one line tells how many they were, in the place where they would have stood, and
/// lines are taken again.
///
/// A signal handler may take over the writing for good: see `writeAfterCrash`.
class LogQueue {
  public:
    /// `room` in bytes. A line that is longer is taken while the queue is empty.
    explicit LogQueue(std::size_t room);
    ~LogQueue();

    LogQueue(const LogQueue&) = delete;
    LogQueue& operator=(const LogQueue&) = delete;

    /// Puts a line in or leaves it out; never waits for the output. Callable from any thread.
    void push(LogLine::Pointer line);

    /// Ends the wait of the writing thread, which lines do that come into an empty queue.
    void wakeWriter() const;

    /// Writes lines, each with one call where the output takes it whole, until the queue is empty
    /// (`Taken`) or the output is `Full`. What a broken output refuses is gone. For one thread.
    LogOutput::State writeTo(const LogOutput& output);

    /// Can be read once the writing thread was woken, until `noteWoken`; -1 where there is none.
    int wakeDescriptor() const { return wake_.get(); }

    /// How long at a time the writing thread may wait for lines (for ever if negative): where the
    /// system has given no descriptor, nobody can wake it, and it has to look by itself.
    std::chrono::milliseconds longestWait() const;

    /// Waits until the writing thread is woken, or `limit` has passed (for ever if negative).
    void waitForWake(std::chrono::milliseconds limit) const;
    void noteWoken() const;

    /// For the writing thread.
    bool isEmpty() const;

    /// Whether the output has got only a part of a line. For the writing thread.
    bool isWithinLine() const { return written_ > 0; }

    /// For a signal handler that ends the process: writes what waits, waiting no longer than about
    /// `limit` for the reader (or for a call that another thread is in). Nobody else writes
    /// afterwards. Allocates nothing and takes no lock.
    void writeAfterCrash(const LogOutput& output, std::chrono::milliseconds limit);

  private:
    bool takeTurn();
    LogOutput::State writeFront(const LogOutput& output, LogLine& line);
    void append(LogLine::Pointer line);
    void giveBack(std::size_t cost);

    const std::size_t room_;
    const UniqueFd wake_; ///< An event descriptor, which a thread can wait for besides the output.
    /// Of whoever writes: the last line that was written, which only leads to the next.
    LogLine* front_;
    std::size_t written_ = 0;        ///< Bytes of the line behind `front_`.
    std::atomic<bool> turn_ = false; ///< Somebody is at `front_`.
    std::mutex mutex_;               ///< Guards the rest, which a signal handler only looks at.
    LogLine* back_;
    std::size_t used_ = 0;
    std::atomic<std::uint64_t> leftOut_ = 0;
};

} // namespace orv
