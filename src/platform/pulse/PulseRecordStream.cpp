#include "PulseRecordStream.h"

#include "ThreadChecks.h"

namespace orv {

namespace {

void closeOnceOpen(pa_stream* stream, void*) {
    if (pa_stream_get_state(stream) == PA_STREAM_READY) {
        pa_stream_disconnect(stream);
    }
}

pa_stream_flags_t flagsFor(const PulseRecording& recording) {
    // Without the latency flag a source may gather seconds of sound before it sends any.
    int flags = PA_STREAM_ADJUST_LATENCY;
    if (!recording.mayMove) {
        flags |= PA_STREAM_DONT_MOVE;
    }
    if (recording.paused) {
        flags |= PA_STREAM_START_CORKED;
    }
    if (recording.channelMap) {
        flags |= PA_STREAM_NO_REMIX_CHANNELS;
    }
    return static_cast<pa_stream_flags_t>(flags);
}

} // namespace

void PulseRecordStream::Release::operator()(pa_stream* stream) const {
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    // A stream that is still being opened cannot be closed yet: the server would keep recording.
    const bool opening = pa_stream_get_state(stream) == PA_STREAM_CREATING;
    pa_stream_set_state_callback(stream, opening ? &closeOnceOpen : nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

PulseRecordStream::PulseRecordStream(pa_stream* stream, std::size_t channels,
                                     const PulseConnection& connection, Listener& listener)
    : stream_(stream)
    , channels_(channels)
    , connection_(connection)
    , listener_(listener) {}

std::unique_ptr<PulseRecordStream> PulseRecordStream::open(const PulseConnection& connection,
                                                           const PulseRecording& recording,
                                                           Listener& listener) {
    const pa_sample_spec spec = {.format = PA_SAMPLE_FLOAT32NE,
                                 .rate = recording.sampleRate,
                                 .channels = recording.channels};
    pa_stream* raw = pa_stream_new(connection.context(), "Orvane", &spec,
                                   recording.channelMap ? &*recording.channelMap : nullptr);
    if (!raw) {
        return nullptr;
    }
    std::unique_ptr<PulseRecordStream> stream(
        new PulseRecordStream(raw, recording.channels, connection, listener));
    if (recording.playback) {
        pa_stream_set_monitor_stream(raw, *recording.playback);
    }
    pa_stream_set_state_callback(
        raw, [](pa_stream*, void* self) { static_cast<PulseRecordStream*>(self)->stateChanged(); },
        stream.get());
    pa_stream_set_read_callback(
        raw,
        [](pa_stream*, std::size_t, void* self) {
            static_cast<PulseRecordStream*>(self)->readable();
        },
        stream.get());

    pa_stream_set_moved_callback(
        raw,
        [](pa_stream* moved, void* self) {
            static_cast<PulseRecordStream*>(self)->listener_.recordingMoved(
                pa_stream_get_device_name(moved));
        },
        stream.get());

    constexpr auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr attributes = {
        .maxlength = unset,
        .tlength = unset,
        .prebuf = unset,
        .minreq = unset,
        .fragsize = static_cast<std::uint32_t>(recording.fragmentFrames * pa_frame_size(&spec)),
    };
    const char* source = recording.source.isEmpty() ? nullptr : recording.source.constData();
    if (pa_stream_connect_record(raw, source, &attributes, flagsFor(recording)) < 0) {
        return nullptr;
    }
    return stream;
}

void PulseRecordStream::stateChanged() {
    const pa_stream_state_t state = pa_stream_get_state(stream_.get());
    if (state == PA_STREAM_READY) {
        listener_.recordingReady();
    } else if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED) {
        const int error = pa_context_errno(pa_stream_get_context(stream_.get()));
        listener_.recordingEnded(
            QString::fromUtf8(pa_strerror(state == PA_STREAM_TERMINATED ? PA_ERR_KILLED : error)));
    }
}

void PulseRecordStream::readable() {
    ORV_ON(connection_);
    const std::size_t frameSize = channels_ * sizeof(float);
    while (pa_stream_readable_size(stream_.get()) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0) {
            return;
        }
        if (const std::size_t frames = bytes / frameSize; frames > 0) {
            listener_.recorded(static_cast<const float*>(data), frames);
        }
        pa_stream_drop(stream_.get());
    }
}

} // namespace orv
