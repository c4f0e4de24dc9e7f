#include "LevelMeter.h"

namespace orv {

void LevelMeter::apply(float level) {
    audioLevel_ = audioLevel_ * 0.7F + level * 0.3F;
    peakLevel_ = peakLevel_ < level ? level : peakLevel_ * 0.95F;
}

void LevelMeter::reset() {
    audioLevel_ = 0;
    peakLevel_ = 0;
}

} // namespace orv
