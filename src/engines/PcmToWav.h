#pragma once

#include <QByteArray>

#include <cstdint>

namespace orv {

/// The 44 bytes in front of `pcmBytes` bytes of 16-bit mono PCM in a RIFF wave file. A size or rate
/// that the file format cannot hold is a programming error and ends the program.
QByteArray waveHeader(std::int64_t pcmBytes, std::int64_t sampleRate);

/// A RIFF wave file with 16-bit mono PCM.
QByteArray pcmToWAV(const QByteArray& pcm, std::int64_t sampleRate);

} // namespace orv
