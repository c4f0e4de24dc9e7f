// Whatever Google's recognition answers must be understood or refused.

#include "GoogleCloudMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto text = parseGoogleRecognition(body);
    if (text && *text != text->trimmed()) {
        std::abort();
    }
    return 0;
}
