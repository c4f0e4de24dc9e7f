#pragma once

namespace orv {

/// What a run listens to. The numbers are stored in the settings; 3 and above are invalid.
enum class AudioSourceType {
    Microphone = 0,
    SystemAudio = 1,
    SingleApp = 2,
};

} // namespace orv
