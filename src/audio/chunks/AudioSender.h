#pragma once

#include "BackendLink.h"
#include "Chunker.h"
#include "SampleBlocks.h"
#include "SerialQueue.h"

#include <QByteArray>

#include <functional>
#include <span>
#include <vector>

namespace orv {

/// Encodes captured sound and hands it on, in the order of capture, on its own serial queue
/// ("io.tavrin.orv.audio-send"). Every operation may be called from any thread and returns at once.
class AudioSender {
  public:
    /// Receives 16-bit PCM for a direct engine, on the queue.
    using PcmSink = std::function<void(QByteArray pcm)>;
    /// Takes back the memory of a chunk; callable from the queue.
    using Recycle = std::function<void(std::vector<float>&& samples)>;

    explicit AudioSender(Recycle recycle);

    /// Where chunks and messages posted from now on go.
    void setLink(BackendLink::Sender link);
    void setPcmSink(PcmSink sink);

    /// No sink for what is posted from now on; `done` is called on the queue, behind everything
    /// that was posted before.
    void endPcmSink(std::function<void()> done = {});

    /// Sends a chunk the way its route says; a chunk for a link that is gone is dropped.
    void sendChunk(Chunk&& chunk);

    /// Sends samples as one audio message; `sent` is called once, from any thread.
    void sendAudio(std::vector<float>&& samples, double sampleRate, std::function<void()> sent);

    /// Hands one captured buffer to the direct engine. The samples are copied; once the usual
    /// number of buffers has been under way, that needs no memory. From one thread at a time.
    void streamBuffer(std::span<const float> samples);

    /// Sends a message behind all sound posted before; `sent` as above, may be empty.
    void sendMessage(QByteArray message, std::function<void(const QString& error)> sent = {});

  private:
    void sendBlock();
    void encodeAndSend(std::vector<float>& samples, double sampleRate,
                       const std::function<void()>& sent);

    const Recycle recycle_;
    BackendLink::Sender link_; // Touched on the queue only, like the sink.
    PcmSink pcmSink_;
    SampleBlocks blocks_; ///< On their way to the direct engine.
    SerialQueue queue_;   // Last: its jobs use everything above.
};

} // namespace orv
