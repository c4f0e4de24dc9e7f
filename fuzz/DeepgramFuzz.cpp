// Whatever Deepgram sends must be understood or ignored.

#include "DeepgramMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray message(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    // A transcript comes only from a final result.
    if (!deepgramTranscript(message).isEmpty() &&
        (!message.contains("true") || !message.contains(":"))) {
        std::abort();
    }
    return 0;
}
