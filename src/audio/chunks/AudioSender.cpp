#include "AudioSender.h"

#include "BackendMessages.h"
#include "Log.h"
#include "Pcm16.h"

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

AudioSender::AudioSender(Recycle recycle)
    : recycle_(std::move(recycle))
    , queue_(u"io.tavrin.orv.audio-send"_s) {}

void AudioSender::setLink(BackendLink::Sender link) {
    queue_.post([this, link = std::move(link)] { link_ = link; });
}

void AudioSender::setPcmSink(PcmSink sink) {
    queue_.post([this, sink = std::move(sink)] { pcmSink_ = sink; });
}

void AudioSender::endPcmSink(std::function<void()> done) {
    queue_.post([this, done = std::move(done)] {
        pcmSink_ = {};
        if (done) {
            done();
        }
    });
}

void AudioSender::sendChunk(Chunk&& chunk) {
    // Jobs are copyable functions; a chunk is not something to copy.
    auto shared = std::make_shared<Chunk>(std::move(chunk));
    queue_.post([this, shared] {
        if (shared->route == ChunkRoute::Backend) {
            encodeAndSend(shared->samples, shared->sampleRate, {});
        } else if (pcmSink_) {
            pcmSink_(pcm16(shared->samples));
        }
        recycle_(std::move(shared->samples));
    });
}

void AudioSender::sendAudio(std::vector<float>&& samples, double sampleRate,
                            std::function<void()> sent) {
    auto shared = std::make_shared<std::vector<float>>(std::move(samples));
    queue_.post([this, shared, sampleRate, sent = std::move(sent)] {
        encodeAndSend(*shared, sampleRate, sent);
        recycle_(std::move(*shared));
    });
}

void AudioSender::streamBuffer(std::span<const float> samples) {
    blocks_.add(samples);
    queue_.post([this] { sendBlock(); });
}

void AudioSender::sendBlock() {
    std::vector<float> block = blocks_.take();
    if (pcmSink_) {
        pcmSink_(pcm16(block));
    }
    blocks_.recycle(std::move(block));
}

void AudioSender::sendMessage(QByteArray message, std::function<void(const QString&)> sent) {
    queue_.post([this, message = std::move(message), sent = std::move(sent)] {
        if (!link_.send(message, sent) && sent) {
            sent(u"Keine Verbindung"_s);
        }
    });
}

void AudioSender::encodeAndSend(std::vector<float>& samples, double sampleRate,
                                const std::function<void()>& sent) {
    const auto report = [count = samples.size(), sent](const QString& error) {
        if (error.isEmpty()) {
            logLine(u"✓ Audio gesendet ("_s + QString::number(count) + u" samples)"_s);
        } else {
            logLine(u"❌ WebSocket send: "_s + error);
        }
        if (sent) {
            sent();
        }
    };
    if (!link_.send(audioMessage(samples, static_cast<int>(sampleRate)), report) && sent) {
        sent();
    }
}

} // namespace orv
