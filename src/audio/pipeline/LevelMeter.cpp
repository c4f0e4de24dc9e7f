#include "LevelMeter.h"

#include "ThreadChecks.h"

namespace orv {

void LevelMeter::apply(float level) {
    ORV_ON_MAIN();
    audioLevel_ = audioLevel_ * 0.7F + level * 0.3F;
    peakLevel_ = peakLevel_ < level ? level : peakLevel_ * 0.95F;
}

void LevelMeter::reset() {
    ORV_ON_MAIN();
    audioLevel_ = 0;
    peakLevel_ = 0;
}

} // namespace orv
