#include "PcmRate.h"

#include <soxr.h>

#include <cstddef>

namespace orv {

QByteArray atSampleRate(const QByteArray& pcm, std::int64_t from, std::int64_t to) {
    if (from == to) {
        return pcm;
    }
    constexpr qsizetype sampleSize = sizeof(std::int16_t);
    const auto samples = static_cast<std::size_t>(pcm.size() / sampleSize);
    const double ratio = static_cast<double>(to) / static_cast<double>(from);
    const auto room = static_cast<std::size_t>(static_cast<double>(samples) * ratio) + 1;
    QByteArray converted(static_cast<qsizetype>(room) * sampleSize, Qt::Uninitialized);
    const soxr_io_spec_t format = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    std::size_t written = 0;
    const soxr_error_t error = soxr_oneshot(static_cast<double>(from), static_cast<double>(to), 1,
                                            pcm.constData(), samples, nullptr, converted.data(),
                                            room, &written, &format, &quality, nullptr);
    if (error != nullptr) {
        return {};
    }
    converted.truncate(static_cast<qsizetype>(written) * sampleSize);
    return converted;
}

} // namespace orv
