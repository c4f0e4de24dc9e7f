// Whatever reaches the overlay's port is a path without blanks or ends of lines, and never more
// than was sent.

#include "HttpRequest.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const QByteArray path = requestPath(bytes);
    const bool isFromThere = path == "/" || bytes.indexOf(path) >= 0;
    if (path.isEmpty() || path.contains(' ') || path.contains("\r\n") || !isFromThere) {
        std::abort();
    }
    if (isWholeRequest(bytes) && !bytes.endsWith("\r\n\r\n")) {
        std::abort();
    }
    return 0;
}
