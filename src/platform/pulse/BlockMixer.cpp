#include "BlockMixer.h"

#include <algorithm>
#include <utility>

namespace orv {

namespace {

/// A second: four times what a stream gathers while another one is waited for.
constexpr std::size_t ringFrames = 48000;

} // namespace

BlockMixer::BlockMixer(Time start, Emit emit)
    : emit_(std::move(emit))
    , coveredUntil_(start)
    , block_(2 * blockFrames) {}

void BlockMixer::addStream(std::uint32_t id) {
    Stream stream;
    stream.id = id;
    stream.ring.resize(2 * ringFrames);
    streams_.push_back(std::move(stream));
}

void BlockMixer::removeStream(std::uint32_t id) {
    for (Stream& stream : streams_) {
        stream.ended = stream.ended || stream.id == id;
    }
}

void BlockMixer::push(std::uint32_t id, const float* samples, std::size_t frames, Time now) {
    for (Stream& stream : streams_) {
        if (stream.id == id && !stream.ended) {
            append(stream, samples, frames);
            stream.lastPush = now;
            stream.hasDelivered = true;
        }
    }
    advance(now);
}

void BlockMixer::advance(Time now) {
    for (;;) {
        bool anyRunning = false;
        bool allHaveBlock = true;
        for (const Stream& stream : streams_) {
            if (stream.hasDelivered && !stream.ended && now - stream.lastPush < patience) {
                anyRunning = true;
                allHaveBlock = allHaveBlock && stream.frames >= blockFrames;
            }
        }
        if (anyRunning) {
            if (!allHaveBlock) {
                return;
            }
            coveredUntil_ = now;
        } else {
            if (now - coveredUntil_ < blockDuration) {
                return;
            }
            if (now - coveredUntil_ > longestStandstill) {
                coveredUntil_ = now - blockDuration;
            }
            coveredUntil_ += blockDuration;
        }
        emitBlock();
    }
}

void BlockMixer::finish() {
    while (hasSound()) {
        emitBlock();
    }
}

bool BlockMixer::hasSound() const {
    return std::any_of(streams_.begin(), streams_.end(),
                       [](const Stream& stream) { return stream.frames > 0; });
}

void BlockMixer::append(Stream& stream, const float* samples, std::size_t frames) {
    if (frames > ringFrames) {
        samples = samples ? samples + 2 * (frames - ringFrames) : nullptr;
        frames = ringFrames;
    }
    // The newest sound counts: what nobody took in time makes room.
    if (const std::size_t room = ringFrames - stream.frames; frames > room) {
        stream.first = (stream.first + frames - room) % ringFrames;
        stream.frames = ringFrames - frames;
    }
    for (std::size_t i = 0; i < frames; ++i) {
        float* const frame = &stream.ring[2 * ((stream.first + stream.frames + i) % ringFrames)];
        frame[0] = samples ? samples[2 * i] : 0.0F;
        frame[1] = samples ? samples[2 * i + 1] : 0.0F;
    }
    stream.frames += frames;
}

void BlockMixer::mixInto(Stream& stream) {
    const std::size_t count = std::min(blockFrames, stream.frames);
    for (std::size_t i = 0; i < count; ++i) {
        const float* const frame = &stream.ring[2 * ((stream.first + i) % ringFrames)];
        block_[i] += frame[0];
        block_[blockFrames + i] += frame[1];
    }
    stream.first = (stream.first + count) % ringFrames;
    stream.frames -= count;
}

void BlockMixer::emitBlock() {
    std::fill(block_.begin(), block_.end(), 0.0F);
    for (Stream& stream : streams_) {
        mixInto(stream);
    }
    streams_.remove_if([](const Stream& stream) { return stream.ended && stream.frames == 0; });
    emit_(block_);
}

} // namespace orv
