// Whatever vMix's host answers is followed to the same end in one piece and byte by byte.

#include "HttpAnswer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    HttpAnswer atOnce;
    atOnce.read(bytes);
    HttpAnswer byteByByte;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        byteByByte.read(bytes.sliced(i, 1));
    }
    if (atOnce.state() != byteByByte.state() || atOnce.close() != byteByByte.close() ||
        atOnce.state() == HttpAnswer::State::Reading) {
        std::abort();
    }
    return 0;
}
