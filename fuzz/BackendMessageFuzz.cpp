// Whatever the other end of the link sends must be understood or ignored.

#include "BackendMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray message(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const DownstreamMessage parsed = parseDownstream(message);
    if (const auto* status = std::get_if<StatusMessage>(&parsed)) {
        // Only the version message has a version.
        if (status->version && status->status != QLatin1StringView("backend_version")) {
            std::abort();
        }
    }
    return 0;
}
