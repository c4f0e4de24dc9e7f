#pragma once

namespace orv {

/// Why a source cannot be listened to.
enum class CaptureProblem {
    None,
    NoPermission,
    NoSoundService, ///< The sound server cannot be reached.
    NoDevice,       ///< There is no such input at all.
    DeviceGone,     ///< The chosen device is not there; its return is waited for.
    Other,          ///< What the system says stands beside it.
};

} // namespace orv
