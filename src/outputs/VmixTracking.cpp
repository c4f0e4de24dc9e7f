#include "VmixTracking.h"

#include "TranslationSettings.h"

#include <QtGlobal>

#include <chrono>
#include <limits>
#include <utility>

namespace orv {

VmixTracking::VmixTracking(TranslationSettings& settings, std::function<QDateTime()> now)
    : settings_(settings)
    , now_(std::move(now)) {}

void VmixTracking::trackVmixSuccess() {
    if (settings_.vmixFailureCount >= 1 || settings_.vmixShowWarningBanner.get()) {
        settings_.vmixFailureCount = 0;
        settings_.vmixShowWarningBanner.set(false);
    }
}

void VmixTracking::trackVmixFailure() {
    if (settings_.vmixFailureCount == std::numeric_limits<std::int64_t>::max()) {
        qFatal("vMix: the number of failures does not fit any more");
    }
    ++settings_.vmixFailureCount;
    if (!settings_.vmixShowConnectionWarnings.get()) {
        return;
    }
    if (settings_.vmixSuppressedUntil && *settings_.vmixSuppressedUntil > now_()) {
        return;
    }
    constexpr std::int64_t threshold = 3;
    if (settings_.vmixFailureCount >= threshold && !settings_.vmixShowWarningBanner.get()) {
        settings_.vmixShowWarningBanner.set(true);
    }
}

void VmixTracking::vmixBannerSnooze() {
    using namespace std::chrono;
    const duration<double> length(settings_.vmixSuppressDuration);
    settings_.vmixShowWarningBanner.set(false);
    settings_.vmixFailureCount = 0;
    settings_.vmixSuppressedUntil = now_().addMSecs(round<milliseconds>(length).count());
}

void VmixTracking::disableVmix() {
    settings_.vmixEnabled.set(false);
    reset();
}

void VmixTracking::turnOffWarnings() {
    settings_.vmixShowConnectionWarnings.set(false);
    reset();
}

void VmixTracking::reset() {
    settings_.vmixShowWarningBanner.set(false);
    settings_.vmixFailureCount = 0;
    settings_.vmixSuppressedUntil.reset();
}

} // namespace orv
