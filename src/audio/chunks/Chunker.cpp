#include "Chunker.h"

#include "ChunkerLines.h"
#include "Log.h"

#include <limits>
#include <utility>

namespace orv {

namespace {

constexpr std::size_t tooFewSamples = 20000;
constexpr std::size_t samplesPerSecond = 48000;
constexpr float veryQuietDb = -50.0F;
constexpr auto noReset = std::numeric_limits<Chunker::TimePoint::rep>::min();

} // namespace

Chunker::Chunker(ChunkHandler onChunk, TimePoint now, std::size_t reservedSamples)
    : onChunk_(std::move(onChunk))
    , buffer_(reservedSamples)
    , detector_(now)
    , resetAt_(noReset) {}

void Chunker::addSamples(const ProcessedBuffer& buffer, TimePoint now) {
    const auto [total, hasDropped] = buffer_.append(buffer.samples);
    if (hasDropped) {
        logLine(chunkerLines::tooMuch(SampleBuffer::longestChunk));
    }
    if (total % samplesPerSecond < buffer.samples.size()) {
        logState(total, buffer);
    }
    if (vadEnabled_) {
        processVAD(buffer.levelDb, now);
    }
}

void Chunker::logState(std::size_t total, const ProcessedBuffer& buffer) const {
    logLine(chunkerLines::buffer(total, buffer.levelDb, buffer.gain, vadEnabled_));
    if (buffer.levelDb < veryQuietDb) {
        logLine(chunkerLines::veryQuiet());
    }
}

void Chunker::processVAD(float levelDb, TimePoint now) {
    if (const auto ticks = resetAt_.exchange(noReset); ticks != noReset) {
        detector_.reset(TimePoint(TimePoint::duration(ticks)));
    }
    const VoiceActivitySettings settings{vadSilenceDuration_, vadThreshold_};
    const VoiceActivity activity = detector_.observe(levelDb, settings, now);
    if (activity.speechStarted) {
        logLine(chunkerLines::speechStarted(levelDb, settings.thresholdDb));
    }
    if (activity.silenceStarted) {
        logLine(chunkerLines::silenceStarted(levelDb));
    }
    if (activity.pauseReached) {
        logLine(chunkerLines::pauseReached(settings.silenceDurationMs));
        if (sendAudioChunk()) {
            detector_.pauseSent(now);
        } else {
            logLine(chunkerLines::pauseTooSmall());
        }
    }
    if (activity.forcedDue) {
        logLine(chunkerLines::forced());
        if (sendAudioChunk()) {
            detector_.forcedSent(now);
        }
    }
}

bool Chunker::sendAudioChunk() {
    if (!isConnected_) {
        logLine(chunkerLines::notConnected());
        return false;
    }
    if (!enqueueChunk()) {
        return false;
    }
    std::unique_lock lock(outgoingLock_);
    if (std::exchange(handingOut_, true)) {
        return true; // By the other thread.
    }
    while (!outgoing_.empty()) {
        Chunk chunk = std::move(outgoing_.front());
        outgoing_.pop_front();
        lock.unlock();
        onChunk_(std::move(chunk));
        lock.lock();
    }
    handingOut_ = false;
    return true;
}

bool Chunker::enqueueChunk() {
    const ChunkRoute route = route_;
    const bool toEngine = route == ChunkRoute::DirectEngine;
    const double sampleRate = currentSampleRate_;
    std::size_t count = 0;
    {
        const std::lock_guard lock(outgoingLock_);
        SampleBuffer::Taken taken = buffer_.takeIfMoreThan(tooFewSamples);
        count = taken.count;
        if (count > tooFewSamples) {
            outgoing_.push_back(Chunk{std::move(taken.samples), route, sampleRate});
        }
    }
    if (count > tooFewSamples) {
        logLine(toEngine ? chunkerLines::dispatchedToEngine(count)
                         : chunkerLines::dispatched(count, sampleRate));
        return true;
    }
    if (count > 0) {
        logLine(toEngine ? chunkerLines::tooLittleForEngine(count)
                         : chunkerLines::tooLittle(count));
    }
    return false;
}

void Chunker::reset(TimePoint now) {
    resetAt_ = now.time_since_epoch().count();
}

} // namespace orv
