// The calls on files.

#include "Next.h"
#include "Transfer.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

using faults::next;
using faults::performed;
using faults::transfer;

namespace {

/// What a file is opened for.
const char* purpose(int flags) {
    if ((flags & O_DIRECTORY) != 0) {
        return "a folder";
    }
    if ((flags & O_CREAT) != 0) {
        return "to create";
    }
    return (flags & O_ACCMODE) == O_RDONLY ? "to read" : "to write";
}

/// The mode that follows the flags of a call that may create a file.
mode_t modeAfter(int flags, std::va_list values) {
    const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return hasMode ? va_arg(values, mode_t) : 0;
}

template <typename Open>
int opened(const char* path, int flags, Open open) {
    return performed({.call = "open", .subject = purpose(flags), .path = path}, open);
}

} // namespace

// Each with the mode where there is one, as the callers' compilers put it.
#define ORVANE_MODE(flags)                                                                         \
    std::va_list values;                                                                           \
    va_start(values, flags);                                                                       \
    const mode_t mode = modeAfter(flags, values);                                                  \
    va_end(values)

extern "C" int open(const char* path, int flags, ...) {
    ORVANE_MODE(flags);
    return opened(path, flags, [&] { return next<"open", decltype(open)>()(path, flags, mode); });
}

extern "C" int open64(const char* path, int flags, ...) {
    ORVANE_MODE(flags);
    return opened(path, flags,
                  [&] { return next<"open64", decltype(open64)>()(path, flags, mode); });
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
    ORVANE_MODE(flags);
    return opened(path, flags,
                  [&] { return next<"openat", decltype(openat)>()(folder, path, flags, mode); });
}

extern "C" int openat64(int folder, const char* path, int flags, ...) {
    ORVANE_MODE(flags);
    return opened(path, flags, [&] {
        return next<"openat64", decltype(openat64)>()(folder, path, flags, mode);
    });
}

extern "C" int creat(const char* path, mode_t mode) {
    return opened(path, O_CREAT, [&] { return next<"creat", decltype(creat)>()(path, mode); });
}

extern "C" int creat64(const char* path, mode_t mode) {
    return opened(path, O_CREAT, [&] { return next<"creat64", decltype(creat64)>()(path, mode); });
}

// What a compiler makes of `open` when it is asked to check arguments.
extern "C" int __open_2(const char* path, int flags) { // NOLINT(*-reserved-identifier)
    return opened(path, flags,
                  [&] { return next<"__open_2", int(const char*, int)>()(path, flags); });
}

extern "C" int __open64_2(const char* path, int flags) { // NOLINT(*-reserved-identifier)
    return opened(path, flags,
                  [&] { return next<"__open64_2", int(const char*, int)>()(path, flags); });
}

extern "C" ssize_t read(int descriptor, void* bytes, std::size_t size) {
    return transfer({.call = "read", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"read", decltype(read)>()(descriptor, bytes, wanted);
    });
}

extern "C" ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t offset) {
    return transfer({.call = "pread", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"pread", decltype(pread)>()(descriptor, bytes, wanted, offset);
    });
}

extern "C" ssize_t pread64(int descriptor, void* bytes, std::size_t size, off64_t offset) {
    return transfer({.call = "pread", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"pread64", decltype(pread64)>()(descriptor, bytes, wanted, offset);
    });
}

extern "C" ssize_t readv(int descriptor, const iovec* parts, int count) {
    return transfer({.call = "readv", .descriptor = descriptor}, static_cast<std::size_t>(count),
                    [&](std::size_t wanted) {
                        return next<"readv", decltype(readv)>()(descriptor, parts,
                                                                static_cast<int>(wanted));
                    });
}

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    return transfer({.call = "write", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"write", decltype(write)>()(descriptor, bytes, wanted);
    });
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, std::size_t size, off_t offset) {
    return transfer({.call = "pwrite", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"pwrite", decltype(pwrite)>()(descriptor, bytes, wanted, offset);
    });
}

extern "C" ssize_t pwrite64(int descriptor, const void* bytes, std::size_t size, off64_t offset) {
    return transfer({.call = "pwrite", .descriptor = descriptor}, size, [&](std::size_t wanted) {
        return next<"pwrite64", decltype(pwrite64)>()(descriptor, bytes, wanted, offset);
    });
}

extern "C" ssize_t writev(int descriptor, const iovec* parts, int count) {
    return transfer({.call = "writev", .descriptor = descriptor}, static_cast<std::size_t>(count),
                    [&](std::size_t wanted) {
                        return next<"writev", decltype(writev)>()(descriptor, parts,
                                                                  static_cast<int>(wanted));
                    });
}

extern "C" int fsync(int descriptor) {
    return performed({.call = "fsync", .descriptor = descriptor},
                     [&] { return next<"fsync", decltype(fsync)>()(descriptor); });
}

extern "C" int fdatasync(int descriptor) {
    return performed({.call = "fdatasync", .descriptor = descriptor},
                     [&] { return next<"fdatasync", decltype(fdatasync)>()(descriptor); });
}

extern "C" int ftruncate(int descriptor, off_t size) noexcept {
    return performed({.call = "ftruncate", .descriptor = descriptor},
                     [&] { return next<"ftruncate", decltype(ftruncate)>()(descriptor, size); });
}

extern "C" int ftruncate64(int descriptor, off64_t size) noexcept {
    return performed({.call = "ftruncate", .descriptor = descriptor}, [&] {
        return next<"ftruncate64", decltype(ftruncate64)>()(descriptor, size);
    });
}

extern "C" int rename(const char* from, const char* to) noexcept {
    return performed({.call = "rename", .path = to},
                     [&] { return next<"rename", decltype(rename)>()(from, to); });
}

extern "C" int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return performed({.call = "rename", .path = to}, [&] {
        return next<"renameat", decltype(renameat)>()(fromFolder, from, toFolder, to);
    });
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned int flags) noexcept {
    return performed({.call = "rename", .path = to}, [&] {
        return next<"renameat2", decltype(renameat2)>()(fromFolder, from, toFolder, to, flags);
    });
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    return performed({.call = "mkdir", .path = path},
                     [&] { return next<"mkdir", decltype(mkdir)>()(path, mode); });
}
