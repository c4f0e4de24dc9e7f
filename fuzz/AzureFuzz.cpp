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
    // Both kinds of answer are told from what is none in the same way.
    if (translation.has_value() != text.has_value()) {
        std::abort();
    }
    // A list is no answer of recognition, and an object none of the translator.
    if (parseAzureTranslator(body) && text && !text->isEmpty()) {
        std::abort();
    }
    // No refusal goes unsaid, and no success is one.
    const bool saysHowItWent = body.contains("RecognitionStatus") || body.contains('\\');
    if (azureFault(200, body) || (!azureFault(400, body) && !saysHowItWent)) {
        std::abort();
    }
    return 0;
}
