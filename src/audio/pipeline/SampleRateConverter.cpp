#include "SampleRateConverter.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace orv {

namespace {

constexpr double outputRate = 48000.0;
/// No device is as slow; what a device without a usable format may tell is kept out.
constexpr double slowestRate = 1000.0;
/// The platform's usual buffer; larger ones make the scratch arrays grow once.
constexpr std::size_t usualFrames = 4096;

struct StreamDeleter {
    void operator()(soxr_t stream) const { soxr_delete(stream); }
};

using Stream = std::unique_ptr<soxr, StreamDeleter>;

/// The converter behind the interface, on libsoxr.
class StreamConverter : public SampleRateConverter {
  public:
    StreamConverter(Stream stream, double inputRate)
        : stream_(std::move(stream))
        , inputRate_(inputRate)
        , input_(usualFrames)
        , output_(2 * outputCapacity(inputRate, usualFrames)) {}

    Conversion convert(const float* channel0, std::size_t frames, std::size_t stride) override {
        gather(channel0, frames, stride);
        const std::size_t room = outputCapacity(inputRate_, frames);
        std::size_t consumed = 0;
        std::size_t produced = 0;
        bool pending = frames > 0;
        while (pending) {
            if (output_.size() < produced + room) {
                output_.resize(produced + room);
            }
            const std::size_t space = output_.size() - produced;
            std::size_t taken = 0;
            std::size_t given = 0;
            const soxr_error_t error =
                soxr_process(stream_.get(), input_.data() + consumed, frames - consumed, &taken,
                             output_.data() + produced, space, &given);
            if (error != nullptr) {
                return {{}, QString::fromUtf8(error)};
            }
            consumed += taken;
            produced += given;
            // The library stops taking input when the output is full: then there is more to fetch.
            pending = consumed < frames || given == space;
        }
        return {std::span<const float>(output_).first(produced), {}};
    }

    Conversion finish() override {
        std::size_t produced = 0;
        for (;;) {
            if (output_.size() < produced + usualFrames) {
                output_.resize(produced + usualFrames);
            }
            std::size_t given = 0;
            // No input tells the library that there is no more.
            const soxr_error_t error =
                soxr_process(stream_.get(), nullptr, 0, nullptr, output_.data() + produced,
                             output_.size() - produced, &given);
            if (error != nullptr) {
                return {{}, QString::fromUtf8(error)};
            }
            if (given == 0) {
                return {std::span<const float>(output_).first(produced), {}};
            }
            produced += given;
        }
    }

  private:
    void gather(const float* channel0, std::size_t frames, std::size_t stride) {
        if (input_.size() < frames) {
            input_.resize(frames);
        }
        for (std::size_t i = 0; i < frames; ++i) {
            const float sample = channel0[i * stride];
            input_[i] = std::isfinite(sample) ? sample : 0.0F;
        }
    }

    Stream stream_;
    double inputRate_;
    std::vector<float> input_;
    std::vector<float> output_;
};

} // namespace

bool SampleRateConverter::isNeeded(double inputRate) {
    return std::fabs(inputRate - outputRate) > 1.0;
}

SampleRateConverter::Creation SampleRateConverter::create(double inputRate) {
    if (!std::isfinite(inputRate) || inputRate < slowestRate) {
        return {nullptr, QStringLiteral("invalid sample rate")};
    }
    if (!isNeeded(inputRate)) {
        return {};
    }
    const soxr_io_spec_t format = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    Stream stream(soxr_create(inputRate, outputRate, 1, &error, &format, &quality, &runtime));
    if (stream == nullptr || error != nullptr) {
        return {nullptr, QString::fromUtf8(error != nullptr ? error : "no converter")};
    }
    return {std::make_unique<StreamConverter>(std::move(stream), inputRate), {}};
}

std::size_t SampleRateConverter::outputCapacity(double inputRate, std::size_t frames) {
    return static_cast<std::size_t>(outputRate / inputRate * static_cast<double>(frames)) + 32;
}

} // namespace orv
