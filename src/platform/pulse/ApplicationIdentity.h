#pragma once

#include "PulseObjects.h"
#include "RunningApp.h"

#include <QString>

#include <optional>

namespace orv {

/// The application behind a playback stream, the way it is listed: named by its application
/// identifier, else by its program's file name. No value when it tells neither, and for the process
/// `ownProcess`, which is this program.
std::optional<RunningApp> applicationOf(const PulsePlayback& playback, qint64 ownProcess);

/// True when the playback stream belongs to the application that `bundleId` names, by either of
/// the two.
bool belongsTo(const PulsePlayback& playback, const QString& bundleId, qint64 ownProcess);

} // namespace orv
