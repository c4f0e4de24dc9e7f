#include "AudioIngest.h"

#include "AudioCapture.h"
#include "ChunkerLines.h"
#include "LevelMeter.h"
#include "Log.h"
#include "SampleRateConverter.h"
#include "ThreadChecks.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orv {

namespace {

constexpr std::size_t usualSamples = 16384;

/// The first `count` places of `scratch`, which grows only beyond its largest size so far.
std::span<float> room(std::vector<float>& scratch, std::size_t count) {
    if (scratch.size() < count) {
        scratch.resize(count);
    }
    return std::span<float>(scratch).first(count);
}

} // namespace

AudioIngest::AudioIngest(Chunker& chunker)
    : chunker_(chunker)
    , scratch_(usualSamples) {}

AudioIngest::~AudioIngest() = default;

void AudioIngest::setSampleRateConverter(std::unique_ptr<SampleRateConverter> converter) {
    ORV_ON_MAIN();
    sampleRateConverter_ = std::move(converter);
}

void AudioIngest::setStreamTap(StreamTap tap) {
    ORV_ON_MAIN();
    streamTap_ = std::move(tap);
    streaming_ = static_cast<bool>(streamTap_);
}

void AudioIngest::processAudioBufferWithConversion(const MicrophoneBuffer& buffer, TimePoint now) {
    if (buffer.firstChannel == nullptr || buffer.frames == 0) {
        return;
    }
    if (sampleRateConverter_ != nullptr) {
        const SampleRateConverter::Conversion conversion =
            sampleRateConverter_->convert(buffer.firstChannel, buffer.frames, buffer.stride);
        if (!conversion.error.isEmpty()) {
            logLine(chunkerLines::conversionError(conversion.error));
        } else if (!conversion.samples.empty()) {
            addSamplesToBuffer(conversion.samples, now);
        }
        return;
    }
    if (buffer.stride == 1) {
        addSamplesToBuffer({buffer.firstChannel, buffer.frames}, now);
        return;
    }
    const std::span<float> channel = room(scratch_, buffer.frames);
    for (std::size_t i = 0; i < buffer.frames; ++i) {
        channel[i] = buffer.firstChannel[i * buffer.stride];
    }
    addSamplesToBuffer(channel, now);
}

void AudioIngest::finishConversion(TimePoint now) {
    if (sampleRateConverter_ == nullptr) {
        return;
    }
    const SampleRateConverter::Conversion rest = sampleRateConverter_->finish();
    if (!rest.error.isEmpty()) {
        logLine(chunkerLines::conversionError(rest.error));
    } else if (!rest.samples.empty()) {
        addSamplesToBuffer(rest.samples, now);
    }
}

void AudioIngest::addScreenCaptureBlock(std::span<const std::byte> block, TimePoint now) {
    const std::span<float> samples = room(scratch_, block.size() / sizeof(float));
    if (!samples.empty()) {
        std::memcpy(samples.data(), block.data(), samples.size_bytes());
    }
    addSamplesToBuffer(samples, now);
}

void AudioIngest::addSamplesToBuffer(std::span<const float> samples, TimePoint now) {
    const ProcessedBuffer processed = pipeline_.process(samples);
    mailbox_.post(processed.meterLevel);
    if (streaming_) {
        streamTap_(processed.samples);
        return;
    }
    chunker_.addSamples(processed, now);
}

std::optional<float> AudioIngest::drainMeter(LevelMeter& meter) {
    ORV_ON_MAIN();
    std::optional<float> loudest;
    mailbox_.drain([&](float level) {
        meter.apply(level);
        loudest = std::max(loudest.value_or(level), level);
    });
    return loudest;
}

} // namespace orv
