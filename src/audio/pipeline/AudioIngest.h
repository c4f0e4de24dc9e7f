#pragma once

#include "Chunker.h"
#include "MeterMailbox.h"
#include "SamplePipeline.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace orv {

class LevelMeter;
class SampleRateConverter;
struct MicrophoneBuffer;

/// The entrance that all captured sound takes: converts it, runs it through the sample pipeline,
/// leaves the meter value for the main thread and passes the samples on to a streaming engine or
/// the chunker.
///
/// Set up by the main thread while nothing is captured; then one capture thread calls the three
/// functions that take sound, one buffer at a time, while the main thread drains the meter. They
/// make no system call and allocate nothing, but for the lines that are logged and the chunks
/// handed out.
class AudioIngest {
  public:
    using TimePoint = Chunker::TimePoint;
    /// Receives the gained, clamped samples of each buffer on the capture thread, valid only during
    /// the call.
    using StreamTap = std::function<void(std::span<const float>)>;

    /// `chunker` outlives this object.
    explicit AudioIngest(Chunker& chunker);
    ~AudioIngest();

    AudioIngest(const AudioIngest&) = delete;
    AudioIngest& operator=(const AudioIngest&) = delete;

    // While nothing is captured.

    SamplePipeline& pipeline() { return pipeline_; }

    /// The converter for the next run's microphone; null when it delivers 48 kHz.
    void setSampleRateConverter(std::unique_ptr<SampleRateConverter> converter);

    /// With a tap, buffers go there and not to the chunker; an empty one ends that.
    void setStreamTap(StreamTap tap);

    /// Callable from any thread, also during a run: from the next buffer on the chunker gets the
    /// samples after all.
    void endStreaming() { streaming_ = false; }

    // On the capture thread. `now` is the time of the buffer.

    /// A microphone's buffer: channel 0 of it, converted if there is a converter. An empty buffer,
    /// one without float data, and one that cannot be converted (which is logged) are dropped.
    void processAudioBufferWithConversion(const MicrophoneBuffer& buffer, TimePoint now);

    /// A block of system or application sound: its bytes are taken as they lie as 32-bit floats at
    /// 48 kHz; an incomplete float at the end is dropped.
    void addScreenCaptureBlock(std::span<const std::byte> block, TimePoint now);

    /// The source has ended: what the converter, if there is one, still holds back. Also on the
    /// main thread, when nothing is captured any more. The converter is dropped with the next run.
    void finishConversion(TimePoint now);

    /// Mono samples at 48 kHz.
    void addSamplesToBuffer(std::span<const float> samples, TimePoint now);

    // On the main thread.

    /// Applies to `meter` every buffer since the last call, in order. The loudest of their meter
    /// values (0..1); none when there was no buffer.
    std::optional<float> drainMeter(LevelMeter& meter);

  private:
    Chunker& chunker_;
    SamplePipeline pipeline_;
    MeterMailbox mailbox_;
    std::unique_ptr<SampleRateConverter> sampleRateConverter_;
    StreamTap streamTap_;
    std::atomic<bool> streaming_ = false;
    std::vector<float> scratch_; ///< Floats gathered from other layouts.
};

} // namespace orv
