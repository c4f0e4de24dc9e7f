#include "Pcm16.h"

#include <QtEndian>

#include <cstddef>
#include <cstring>

namespace orv {

void writePcm16(std::span<const float> samples, char* bytes) noexcept {
    const float* const source = samples.data();
    const std::size_t count = samples.size();
    // One loop without branches, so that the compiler works on four samples at a time.
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t value = qToLittleEndian(pcm16Sample(source[i]));
        std::memcpy(bytes + 2 * i, &value, sizeof value);
    }
}

void appendPcm16(QByteArray& bytes, std::span<const float> samples) {
    const qsizetype before = bytes.size();
    bytes.resize(before + 2 * static_cast<qsizetype>(samples.size()));
    writePcm16(samples, bytes.data() + before);
}

QByteArray pcm16(std::span<const float> samples) {
    QByteArray bytes(2 * static_cast<qsizetype>(samples.size()), Qt::Uninitialized);
    writePcm16(samples, bytes.data());
    return bytes;
}

} // namespace orv
