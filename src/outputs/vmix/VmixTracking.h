#pragma once

#include <QDateTime>
#include <QObject>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace orv {

class TranslationSettings;

/// What is remembered of the failures of the vMix output. It lasts as long as the program.
struct VmixFailures {
    std::int64_t vmixFailureCount = 0;                 ///< Translations in a row that failed.
    std::optional<QDateTime> vmixSuppressedUntil = {}; ///< Warnings are snoozed until then.
    bool vmixShowWarningBanner = false;                ///< The user is being warned.

    std::int64_t vmixFailureThreshold = 3;           ///< Failures before the banner is shown.
    std::chrono::seconds vmixSuppressDuration{1800}; ///< Length of a snooze.
};

/// Counts the failures of the vMix output in a row and decides when the user is warned. Nothing of
/// it is persisted. Main thread only.
class VmixTracking : public QObject {
    Q_OBJECT

  public:
    /// `settings` outlive the object; `now` tells the time; `failures` are what it begins with.
    explicit VmixTracking(TranslationSettings& settings,
                          std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc,
                          VmixFailures failures = {});

    const VmixFailures& failures() const { return failures_; }

    /// vMix has answered: no failures, no banner.
    void trackVmixSuccess();

    /// One failure more. With the one that reaches `vmixFailureThreshold` the banner is shown,
    /// unless warnings are off or snoozed; then it is shown by the first failure after that. A
    /// count beyond the largest integer ends the program.
    void trackVmixFailure();

    /// The banner's "Later": hidden, counted from 0, silent for `vmixSuppressDuration`.
    void vmixBannerSnooze();

    /// The banner's "Disable vMix": switches the output off.
    void disableVmix();

    /// The banner's "Turn off warnings".
    void turnOffWarnings();

  Q_SIGNALS:
    /// The banner is to be shown or hidden: `vmixShowWarningBanner` is another one than before.
    void vmixShowWarningBannerChanged(bool shown);

  private:
    void showBanner(bool shown);
    void reset();

    TranslationSettings& settings_;
    std::function<QDateTime()> now_;
    VmixFailures failures_;
};

} // namespace orv
