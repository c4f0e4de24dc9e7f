#pragma once

#include "UniqueFd.h"

#include <fcntl.h>
#include <sys/resource.h>

// Whether a test may leave the process no file to open. GCC's check of what an object is reads it
// through a pipe, and takes one that it cannot make for an object that is broken.
#ifdef __SANITIZE_ADDRESS__
#define ORV_MAY_LACK_FILES 0
#else
#define ORV_MAY_LACK_FILES 1
#endif

namespace orv::test {

/// Lets this process open `count` more files while it exists.
class FewFiles {
  public:
    explicit FewFiles(rlim_t count) {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const UniqueFd next(::open("/dev/null", O_RDONLY));
        const rlimit few = {.rlim_cur = static_cast<rlim_t>(next.get()) + count,
                            .rlim_max = before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }

    ~FewFiles() { ::setrlimit(RLIMIT_NOFILE, &before_); }

    FewFiles(const FewFiles&) = delete;
    FewFiles& operator=(const FewFiles&) = delete;

  private:
    rlimit before_ = {};
};

} // namespace orv::test
