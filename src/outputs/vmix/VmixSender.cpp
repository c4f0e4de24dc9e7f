#include "VmixSender.h"

#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"
#include "VmixRequest.h"
#include "VmixTracking.h"

#include <utility>

namespace orv {

VmixSender::VmixSender(const TranslationSettings& settings, VmixTracking& tracking,
                       VmixLimits limits, LookUpHost lookUp)
    : settings_(settings)
    , tracking_(tracking)
    , limits_(limits)
    , lookUp_(std::move(lookUp)) {}

VmixSender::~VmixSender() = default;

void VmixSender::sendToVmix(const Result& result) {
    ORV_ON_MAIN();
    if (!settings_.vmixEnabled.get()) {
        return;
    }
    sendText(result.translation, settings_.vmixFieldTranslation.get(),
             [this, translation = result.translation](const QString& error) {
                 translationDone(translation, error);
             });
    sendText(result.original, settings_.vmixFieldOriginal.get(), {});
}

void VmixSender::sendText(const QString& text, const QString& fieldName, VmixRequests::Done done) {
    if (text.isEmpty() || fieldName.isEmpty()) {
        return;
    }
    const TypedHost typed = typedHost(settings_.vmixHost.get());
    const auto url = vmixUrl({.host = typed.host,
                              .port = typed.port.value_or(settings_.vmixPort.get()),
                              .input = settings_.vmixInput.get(),
                              .name = fieldName},
                             text);
    if (!url) {
        return;
    }
    vmixSession().get(*url, std::move(done));
}

VmixRequests& VmixSender::vmixSession() {
    if (!session_) {
        session_ = std::make_unique<VmixRequests>(limits_, lookUp_);
    }
    return *session_;
}

void VmixSender::translationDone(const QString& translation, const QString& error) {
    logLine(error.isEmpty() ? vmixUpdatedLine(translation) : u"❌ vMix: " + error);
    if (error.isEmpty()) {
        tracking_.trackVmixSuccess();
    } else if (settings_.vmixEnabled.get()) {
        // What was still under way when the user gave the output up must not warn him again.
        tracking_.trackVmixFailure();
    }
}

} // namespace orv
