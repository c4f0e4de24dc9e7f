#include "Report.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace faults {

namespace {

int report = -1;

/// A line, put together without asking for memory and written in one piece.
class Line {
  public:
    __attribute__((format(printf, 2, 3))) void add(const char* format, ...) {
        std::va_list values;
        va_start(values, format);
        const int added =
            std::vsnprintf(text_.data() + used_, text_.size() - used_, format, values);
        va_end(values);
        if (added > 0) {
            used_ = std::min(used_ + static_cast<std::size_t>(added), text_.size() - 1);
        }
    }

    void add(const Place& place) {
        add("%s|%s|%s|", place.call, place.subject.words(), place.library.data());
        for (std::size_t index = 0; index < place.depth; ++index) {
            add(index == 0 ? "%zx" : " %zx", place.frames[index]);
        }
    }

    /// Past the functions that this library stands in for.
    void write() {
        add("\n");
        ::syscall(SYS_write, report, text_.data(), used_);
    }

  private:
    std::array<char, 1024> text_ = {};
    std::size_t used_ = 0;
};

/// What a descriptor stands for, or an empty text.
void addTarget(Line& line, int descriptor) {
    std::array<char, 32> link = {};
    std::array<char, 512> target = {};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    if (::readlink(link.data(), target.data(), target.size() - 1) > 0) {
        line.add("%s", target.data());
    }
}

} // namespace

void openReport(const char* path) {
    constexpr int firstUnused = 900;
    const auto opened = static_cast<int>(
        ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    report = ::fcntl(opened, F_DUPFD_CLOEXEC, firstUnused);
    ::syscall(SYS_close, opened);
}

void tellPlace(const Place& place, std::uint64_t count) {
    Line line;
    line.add("place %llx %llu ", static_cast<unsigned long long>(place.hash()),
             static_cast<unsigned long long>(count));
    line.add(place);
    line.write();
}

void tellFault(const Place& place, const Request& request, unsigned long occurrence, int error) {
    Line line;
    line.add("fault %llx %lu %d ", static_cast<unsigned long long>(place.hash()), occurrence,
             error);
    line.add(place);
    line.add("|");
    if (request.path != nullptr) {
        line.add("%s", request.path);
    } else if (request.descriptor >= 0) {
        addTarget(line, request.descriptor);
    }
    line.write();
}

} // namespace faults
