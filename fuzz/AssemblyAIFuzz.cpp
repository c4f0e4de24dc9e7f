// Whatever AssemblyAI sends must be understood or ignored.

#include "AssemblyAIMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray message(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    // No message is both.
    if (!assemblyaiTranscript(message).isEmpty() && !assemblyaiSession(message).isEmpty()) {
        std::abort();
    }
    return 0;
}
