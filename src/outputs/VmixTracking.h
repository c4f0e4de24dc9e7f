#pragma once

#include <QDateTime>

#include <functional>

namespace orv {

class TranslationSettings;

/// Counts the failures of the vMix output in a row and decides when the user is warned. The state
/// stands in the settings object and is never persisted. Main thread only.
class VmixTracking {
  public:
    /// `settings` outlive the object; `now` tells the time.
    explicit VmixTracking(TranslationSettings& settings,
                          std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);

    /// vMix has answered: no failures, no banner.
    void trackVmixSuccess();

    /// One failure more. The third in a row shows the banner, unless warnings are off or snoozed;
    /// then it is shown by the first failure after that. A count beyond the largest integer ends
    /// the program.
    void trackVmixFailure();

    /// The banner's "Later": hidden, counted from 0, silent for `vmixSuppressDuration`.
    void vmixBannerSnooze();

    /// The banner's "Disable vMix": switches the output off.
    void disableVmix();

    /// The banner's "Turn off warnings".
    void turnOffWarnings();

  private:
    void reset();

    TranslationSettings& settings_;
    std::function<QDateTime()> now_;
};

} // namespace orv
