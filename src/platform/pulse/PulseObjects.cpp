#include "PulseObjects.h"

#include <pulse/proplist.h>

namespace orv {

namespace {

QString property(pa_proplist* list, const char* key) {
    return QString::fromUtf8(pa_proplist_gets(list, key));
}

} // namespace

PulseSource toPulseSource(const pa_source_info& info) {
    return {
        .name = info.name,
        .description = QString::fromUtf8(info.description),
        .index = info.index,
        .isMonitor = info.monitor_of_sink != PA_INVALID_INDEX,
        .sampleRate = static_cast<double>(info.sample_spec.rate),
        .channels = info.sample_spec.channels,
        .channelMap = info.channel_map,
    };
}

PulseSink toPulseSink(const pa_sink_info& info) {
    return {.name = info.name, .monitorName = info.monitor_source_name, .index = info.index};
}

PulsePlayback toPulsePlayback(const pa_sink_input_info& info) {
    return {
        .index = info.index,
        .applicationId = property(info.proplist, PA_PROP_APPLICATION_ID),
        .applicationName = property(info.proplist, PA_PROP_APPLICATION_NAME),
        .binary = property(info.proplist, PA_PROP_APPLICATION_PROCESS_BINARY),
        .processId = property(info.proplist, PA_PROP_APPLICATION_PROCESS_ID).toLongLong(),
    };
}

} // namespace orv
