#include "ApplicationIdentity.h"

namespace orv {

std::optional<RunningApp> applicationOf(const PulsePlayback& playback, qint64 ownProcess) {
    const QString& id = playback.applicationId.isEmpty() ? playback.binary : playback.applicationId;
    if (id.isEmpty() || playback.processId == ownProcess) {
        return std::nullopt;
    }
    return RunningApp{
        .bundleId = id,
        .name = playback.applicationName.isEmpty() ? id : playback.applicationName,
    };
}

bool belongsTo(const PulsePlayback& playback, const QString& bundleId, qint64 ownProcess) {
    if (bundleId.isEmpty() || playback.processId == ownProcess) {
        return false;
    }
    return playback.applicationId == bundleId || playback.binary == bundleId;
}

} // namespace orv
