#pragma once

#include "BackendLink.h"
#include "Chunker.h"
#include "SampleBlocks.h"
#include "SerialQueue.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace orv {

/// A direct engine as the sender sees it. Called on the sender's queue.
class PcmSink {
  public:
    virtual ~PcmSink() = default;
    virtual void take(QByteArray pcm) = 0; ///< 16-bit PCM.
    virtual void end() = 0;                ///< Nothing more comes.
};

/// The sender of captured sound: encodes it and hands it on, in the order of capture, on a queue of
/// its own ("io.tavrin.orv.audio-send"). Every operation may be called from any thread and returns
/// at once.
class AudioSender {
  public:
    /// `chunker` gets the memory of chunks back, and outlives this object.
    explicit AudioSender(Chunker& chunker);

    /// Where chunks and messages posted from now on go.
    void setLink(BackendLink::Sender link);
    void setPcmSink(std::shared_ptr<PcmSink> sink);

    /// No sink for what is posted from now on; the one there is, if any, is told so behind
    /// everything that was posted before.
    void endPcmSink();

    /// Sends a chunk the way its route says; a chunk for a link that is gone is dropped.
    void sendChunk(Chunk&& chunk);

    /// Whom to tell, from any thread, of each chunk that has left from now on; empty: nobody.
    void setChunkSent(std::function<void()> chunkSent);

    /// Sends samples as one audio message; `sent` is called once, from any thread.
    void sendAudio(std::vector<float>&& samples, double sampleRate, BackendLink::Sent sent);

    /// Hands one captured buffer to the direct engine. The samples are copied; once the usual
    /// number of buffers has been under way, that needs no memory. From one thread at a time.
    void streamBuffer(std::span<const float> samples);

    /// Sends a message behind all sound posted before; `sent` as above, may be empty.
    void sendMessage(QByteArray message, BackendLink::Sent sent = {});

  private:
    void sendBlock();
    void encodeAndSend(std::vector<float>& samples, double sampleRate,
                       const BackendLink::Sent& sent);

    Chunker& chunker_;
    BackendLink::Sender link_; // Touched on the queue only, like the sink.
    std::shared_ptr<PcmSink> pcmSink_;
    std::function<void()> chunkSent_;
    SampleBlocks blocks_; ///< On their way to the direct engine.
    SerialQueue queue_;   // Declared last: its jobs use everything above, and it ends first.
};

} // namespace orv
