#include "VmixTracking.h"

#include "TranslationSettings.h"

#include <QtGlobal>

#include <limits>
#include <utility>

namespace orv {

VmixTracking::VmixTracking(TranslationSettings& settings, std::function<QDateTime()> now,
                           VmixFailures failures)
    : settings_(settings)
    , now_(std::move(now))
    , failures_(std::move(failures)) {}

void VmixTracking::trackVmixSuccess() {
    failures_.vmixFailureCount = 0;
    showBanner(false);
}

void VmixTracking::trackVmixFailure() {
    if (failures_.vmixFailureCount == std::numeric_limits<std::int64_t>::max()) {
        qFatal("vMix: the number of failures does not fit any more");
    }
    ++failures_.vmixFailureCount;
    if (!settings_.vmixShowConnectionWarnings.get()) {
        return;
    }
    if (failures_.vmixSuppressedUntil && *failures_.vmixSuppressedUntil > now_()) {
        return;
    }
    if (failures_.vmixFailureCount >= failures_.vmixFailureThreshold) {
        showBanner(true);
    }
}

void VmixTracking::vmixBannerSnooze() {
    using std::chrono::milliseconds;
    failures_.vmixFailureCount = 0;
    failures_.vmixSuppressedUntil =
        now_().addMSecs(milliseconds(failures_.vmixSuppressDuration).count());
    showBanner(false);
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
    failures_.vmixFailureCount = 0;
    failures_.vmixSuppressedUntil.reset();
    showBanner(false);
}

void VmixTracking::showBanner(bool shown) {
    if (std::exchange(failures_.vmixShowWarningBanner, shown) != shown) {
        Q_EMIT vmixShowWarningBannerChanged(shown);
    }
}

} // namespace orv
