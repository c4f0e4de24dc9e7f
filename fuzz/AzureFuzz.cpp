// Whatever Azure answers must be understood or refused.

#include "AzureMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto translation = parseAzureTranslation(body);
    const auto text = parseAzureRecognition(body);
    // Both kinds of answer say the text in the same way; one without its translation says nothing.
    if (translation.has_value() != text.has_value()) {
        std::abort();
    }
    if (translation && *translation != AzureResult() && translation->text != *text) {
        std::abort();
    }
    return 0;
}
