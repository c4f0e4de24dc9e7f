#include "VRChatOutput.h"

#include "DatagramSender.h"
#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"
#include "VRChatMessage.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

VRChatOutput::VRChatOutput(const TranslationSettings& settings, LookUpHost lookUp)
    : settings_(settings)
    , lookUp_(std::move(lookUp)) {}

VRChatOutput::~VRChatOutput() = default;

QString VRChatOutput::vrchatMessage(const Result& result) const {
    return orv::vrchatMessage(result, settings_.vrchatSendMode.get());
}

void VRChatOutput::sendToVRChat(const Result& result) {
    ORV_ON_MAIN();
    if (!settings_.vrchatEnabled.get()) {
        return;
    }
    const QString message = vrchatMessage(result);
    if (!message.isEmpty()) {
        sendWithSettings(message);
    }
}

void VRChatOutput::sendVRChatTest() {
    ORV_ON_MAIN();
    sendWithSettings(u"ORV — VRChat OSC ✓"_s);
}

void VRChatOutput::sendWithSettings(const QString& message) {
    sendOSCChatbox(message, settings_.vrchatPlaySound.get(), settings_.vrchatHost.get(),
                   settings_.vrchatPort.get());
}

void VRChatOutput::sendOSCChatbox(const QString& message, bool playSound, const QString& host,
                                  std::int64_t port) {
    if (!threadChecks::isMain()) {
        main_.handle().post([this, message, playSound, host, port] {
            sendOSCChatbox(message, playSound, host, port);
        });
        return;
    }
    if (!sender_) {
        sender_ = std::make_unique<DatagramSender>(lookUp_);
        QObject::connect(sender_.get(), &DatagramSender::failed, sender_.get(),
                         [](const QString& error) { logLine(u"❌ VRChat OSC: " + error); });
    }
    sender_->send({chatboxPacket(message, playSound), host, clampedPort(port)});
}

} // namespace orv
