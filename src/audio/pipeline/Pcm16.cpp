#include "Pcm16.h"

#include "SampleLoops.h"

namespace orv {

void writePcm16(std::span<const float> samples, char* bytes) noexcept {
    sampleLoops::writePcm16<FourFloats>(samples, bytes);
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
