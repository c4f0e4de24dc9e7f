#include "AudioSender.h"

#include "BackendMessages.h"
#include "Log.h"
#include "Pcm16.h"
#include "ThreadChecks.h"

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

AudioSender::AudioSender(Chunker& chunker)
    : chunker_(chunker)
    , queue_(u"io.tavrin.orv.audio-send"_s) {}

void AudioSender::setLink(BackendLink::Sender link) {
    queue_.post([this, link = std::move(link)] {
        ORV_ON(queue_);
        link_ = link;
    });
}

void AudioSender::setPcmSink(std::shared_ptr<PcmSink> sink) {
    queue_.post([this, sink = std::move(sink)] {
        ORV_ON(queue_);
        pcmSink_ = sink;
    });
}

void AudioSender::setChunkSent(std::function<void()> chunkSent) {
    queue_.post([this, chunkSent = std::move(chunkSent)] {
        ORV_ON(queue_);
        chunkSent_ = chunkSent;
    });
}

void AudioSender::endPcmSink() {
    queue_.post([this] {
        ORV_ON(queue_);
        if (const std::shared_ptr<PcmSink> sink = std::exchange(pcmSink_, nullptr)) {
            sink->end();
        }
    });
}

void AudioSender::sendChunk(Chunk&& chunk) {
    // Jobs are copyable functions; a chunk is not something to copy.
    auto shared = std::make_shared<Chunk>(std::move(chunk));
    queue_.post([this, shared] {
        ORV_ON(queue_);
        if (shared->route == ChunkRoute::Backend) {
            encodeAndSend(shared->samples, shared->sampleRate,
                          [tell = chunkSent_](const QString& error) {
                              if (error.isEmpty() && tell) {
                                  tell();
                              }
                          });
        } else if (pcmSink_) {
            pcmSink_->take(pcm16(shared->samples));
            if (chunkSent_) {
                chunkSent_();
            }
        }
        chunker_.recycle(std::move(shared->samples));
    });
}

void AudioSender::sendAudio(std::vector<float>&& samples, double sampleRate,
                            BackendLink::Sent sent) {
    auto shared = std::make_shared<std::vector<float>>(std::move(samples));
    queue_.post([this, shared, sampleRate, sent = std::move(sent)] {
        ORV_ON(queue_);
        encodeAndSend(*shared, sampleRate, sent);
        chunker_.recycle(std::move(*shared));
    });
}

void AudioSender::streamBuffer(std::span<const float> samples) {
    blocks_.add(samples);
    queue_.post([this] { sendBlock(); });
}

void AudioSender::sendBlock() {
    ORV_ON(queue_);
    std::vector<float> block = blocks_.take();
    if (pcmSink_) {
        pcmSink_->take(pcm16(block));
    }
    blocks_.recycle(std::move(block));
}

void AudioSender::sendMessage(QByteArray message, BackendLink::Sent sent) {
    queue_.post([this, message = std::move(message), sent = std::move(sent)] {
        ORV_ON(queue_);
        if (!link_.send(message, sent) && sent) {
            sent(u"Keine Verbindung"_s);
        }
    });
}

void AudioSender::encodeAndSend(std::vector<float>& samples, double sampleRate,
                                const BackendLink::Sent& sent) {
    const auto report = [count = samples.size(), sent](const QString& error) {
        if (error.isEmpty()) {
            logLine(u"✓ Audio gesendet ("_s + QString::number(count) + u" samples)"_s);
        } else {
            logLine(u"❌ WebSocket send: "_s + error);
        }
        if (sent) {
            sent(error);
        }
    };
    if (!link_.send(audioMessage(samples, static_cast<int>(sampleRate)), report) && sent) {
        sent(u"Keine Verbindung"_s);
    }
}

} // namespace orv
