#pragma once

#include "HostLookups.h"
#include "Output.h"
#include "VmixRequests.h"

#include <QString>

#include <memory>

namespace orv {

class TranslationSettings;
class VmixTracking;

/// Writes results into a title of vMix: one request for each text. Lives on the main thread; no
/// call waits for the network. What is dropped when results arrive faster than vMix takes them is
/// said at `VmixRequests`: the oldest that wait. A dropped text counts neither as success nor as
/// failure.
class VmixSender : public Output {
  public:
    /// The references outlive the object. `lookUp` finds the addresses of host names.
    VmixSender(const TranslationSettings& settings, VmixTracking& tracking, VmixLimits limits = {},
               LookUpHost lookUp = systemLookUp);
    ~VmixSender() override;

    VmixSender(const VmixSender&) = delete;
    VmixSender& operator=(const VmixSender&) = delete;

    void take(const Result& result) override { sendToVmix(result); }

    /// Sends what the settings want of a result. A text that is empty, has no field, or whose
    /// address cannot be formed is left out. Only the translation's request is logged and counted;
    /// a failure that comes once the output is off is logged alone.
    void sendToVmix(const Result& result);

  private:
    /// The HTTP session that is vMix's alone.
    VmixRequests& vmixSession();
    void sendText(const QString& text, const QString& fieldName, VmixRequests::Done done);
    void translationDone(const QString& translation, const QString& error);

    const TranslationSettings& settings_;
    VmixTracking& tracking_;
    const VmixLimits limits_;
    LookUpHost lookUp_;
    std::unique_ptr<VmixRequests> session_; ///< Made on first use. Goes first.
};

} // namespace orv
