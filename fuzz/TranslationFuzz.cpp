// Whatever Google's translation answers must be understood or refused.

#include "TranslationMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto text = parseTranslation(body);
    if (translatedTextFromResponse(body) != text.value_or(QString())) {
        std::abort();
    }
    // Any text can be sent, and is sent as it is.
    if (!translationRequestBody(QString::fromUtf8(body), QStringLiteral("de")).startsWith('{')) {
        std::abort();
    }
    return 0;
}
