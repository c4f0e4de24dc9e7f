#include "PcmToWav.h"

#include <QtEndian>

#include <limits>

namespace orv {

namespace {

template <typename Integer>
void appendLittleEndian(QByteArray& bytes, Integer value) {
    const Integer ordered = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
}

std::uint32_t checked32(std::int64_t value) {
    if (value < 0 || value > std::numeric_limits<std::uint32_t>::max()) {
        qFatal("a wave file cannot hold %lld", static_cast<long long>(value));
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

QByteArray waveHeader(std::int64_t pcmBytes, std::int64_t sampleRate) {
    constexpr std::uint32_t headerAfterSize = 36;
    constexpr std::uint32_t formatSize = 16;
    constexpr std::uint16_t integerPcm = 1;
    constexpr std::uint16_t channels = 1;
    constexpr std::uint16_t bytesPerSample = 2;
    constexpr std::uint16_t bitsPerSample = 16;
    const std::uint32_t size = checked32(pcmBytes);
    const std::uint32_t rate = checked32(sampleRate);

    QByteArray header;
    header.reserve(44);
    header += "RIFF";
    appendLittleEndian(header, checked32(std::int64_t{size} + headerAfterSize));
    header += "WAVEfmt ";
    appendLittleEndian(header, formatSize);
    appendLittleEndian(header, integerPcm);
    appendLittleEndian(header, channels);
    appendLittleEndian(header, rate);
    appendLittleEndian(header, checked32(std::int64_t{rate} * bytesPerSample));
    appendLittleEndian(header, bytesPerSample);
    appendLittleEndian(header, bitsPerSample);
    header += "data";
    appendLittleEndian(header, size);
    return header;
}

QByteArray pcmToWAV(const QByteArray& pcm, std::int64_t sampleRate) {
    return waveHeader(pcm.size(), sampleRate) + pcm;
}

} // namespace orv
