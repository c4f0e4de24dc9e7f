#pragma once

#include <QByteArray>
#include <QString>

#include <pulse/channelmap.h>
#include <pulse/introspect.h>

#include <cstdint>

namespace orv {

/// What the program needs to know of a source, copied out of the sound server's answer.
struct PulseSource {
    QByteArray name;
    QString description;
    std::uint32_t index = PA_INVALID_INDEX;
    bool isMonitor = false; ///< It repeats what a sink plays.
    double sampleRate = 0;  ///< Hz, as it runs now.
    int channels = 0;
    pa_channel_map channelMap = {};
};

/// What the program needs to know of a sink, which is an output.
struct PulseSink {
    QByteArray name;
    QByteArray monitorName;
    std::uint32_t index = PA_INVALID_INDEX;
};

/// A playback stream and the program it belongs to. Properties that are not set are empty.
struct PulsePlayback {
    std::uint32_t index = PA_INVALID_INDEX;
    QString applicationId;
    QString applicationName;
    QString binary;
    qint64 processId = 0; ///< 0 when not told.
};

PulseSource toPulseSource(const pa_source_info& info);
PulseSink toPulseSink(const pa_sink_info& info);
PulsePlayback toPulsePlayback(const pa_sink_input_info& info);

} // namespace orv
