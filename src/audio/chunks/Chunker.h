#pragma once

#include "SampleBuffer.h"
#include "SamplePipeline.h"
#include "VoiceActivityDetector.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace orv {

/// The destination of a chunk.
enum class ChunkRoute {
    Backend,      ///< The speech server.
    DirectEngine, ///< A direct engine that does not stream.
};

/// A chunk of sound: all samples that had gathered when it was taken, at least 20,001.
struct Chunk {
    std::vector<float> samples; ///< Mono, each in [-1, 1]. Give the memory back by `recycle`.
    ChunkRoute route = ChunkRoute::Backend;
    double sampleRate = 48000; ///< Hz.
};

/// The gatherer of samples, which decides when they leave as a chunk: at a pause in speech, or when
/// `sendAudioChunk` is called by the owner's timer. No sample is dropped or reordered.
///
/// Samples come on the capture thread; everything else may be called from any thread at any time.
/// No lock is held while a line is logged or a chunk handed out.
class Chunker {
  public:
    using TimePoint = VoiceActivityDetector::TimePoint;
    /// Receives each chunk, in order, one at a time, on a thread that is inside `addSamples` or
    /// `sendAudioChunk`. It should pass the chunk on to a queue and return.
    using ChunkHandler = std::function<void(Chunk&&)>;

    Chunker(ChunkHandler onChunk, TimePoint now,
            std::size_t reservedSamples = SampleBuffer::defaultReserve);

    /// Capture thread: appends a buffer, logs the state once per second of audio and, with pause
    /// detection on, sends when a pause or the longest chunk is reached. `now` is the time of the
    /// buffer.
    void addSamples(const ProcessedBuffer& buffer, TimePoint now);

    /// Hands out everything gathered as one chunk, if the link is ready and there are more than
    /// 20,000 samples; else the samples stay. Returns whether a chunk left. (When two threads send
    /// at the same time, the one that came first hands out both chunks, so that they stay in
    /// order.)
    bool sendAudioChunk();

    /// Starts pause detection afresh, with `now` as the time of the last send. Takes effect with
    /// the next buffer. The samples stay.
    void reset(TimePoint now);

    /// Takes whatever has gathered, for the end of a run.
    std::vector<float> takeAll() { return buffer_.takeAll(); }

    /// Throws away whatever has gathered.
    void clear() { buffer_.clear(); }

    /// Gives the memory of a chunk back when its samples are no longer needed.
    void recycle(std::vector<float>&& samples) { buffer_.recycle(std::move(samples)); }

    std::size_t bufferedSamples() const { return buffer_.size(); }

    bool vadEnabled() const { return vadEnabled_; }

    void setVadEnabled(bool enabled) { vadEnabled_ = enabled; }

    double vadSilenceDuration() const { return vadSilenceDuration_; } ///< Milliseconds.

    void setVadSilenceDuration(double milliseconds) { vadSilenceDuration_ = milliseconds; }

    float vadThreshold() const { return vadThreshold_; } ///< dB.

    void setVadThreshold(float db) { vadThreshold_ = db; }

    /// Whether the link (or the direct engine) is ready; nothing is handed out while it is not.
    bool isConnected() const { return isConnected_; }

    void setConnected(bool connected) { isConnected_ = connected; }

    ChunkRoute route() const { return route_; }

    void setRoute(ChunkRoute route) { route_ = route; }

    double currentSampleRate() const { return currentSampleRate_; } ///< Hz, told with each chunk.

    void setCurrentSampleRate(double rate) { currentSampleRate_ = rate; }

    /// Tells the most samples that are too few for a chunk. The value is built in: a change here
    /// alone changes nothing.
    int minChunkSamples = 20000;

  private:
    void logState(std::size_t total, const ProcessedBuffer& buffer) const;
    void processVAD(float levelDb, TimePoint now);
    /// Puts everything gathered behind the chunks that wait, if it is enough, and says so.
    bool enqueueChunk();

    const ChunkHandler onChunk_;
    SampleBuffer buffer_;

    /// Orders the chunks of both threads: taken and queued under the lock, handed out by whoever
    /// finds nobody doing it.
    std::mutex outgoingLock_;
    std::deque<Chunk> outgoing_;
    bool handingOut_ = false;

    VoiceActivityDetector detector_; ///< Belongs to the capture thread.
    /// A reset that the capture thread has not seen yet, as ticks of the clock; or `noReset`.
    std::atomic<TimePoint::rep> resetAt_;

    std::atomic<bool> vadEnabled_ = true;
    std::atomic<double> vadSilenceDuration_ = 600.0;
    std::atomic<float> vadThreshold_ = -35.0F;
    std::atomic<bool> isConnected_ = false;
    std::atomic<ChunkRoute> route_ = ChunkRoute::Backend;
    std::atomic<double> currentSampleRate_ = 48000.0;
};

} // namespace orv
