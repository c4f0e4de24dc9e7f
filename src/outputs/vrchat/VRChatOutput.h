#pragma once

#include "HostLookups.h"
#include "Output.h"
#include "PostTarget.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace orv {

class DatagramSender;
class TranslationSettings;

/// Writes results into VRChat's chatbox, over OSC. No call waits for the network; failures only
/// make a line in the log. What is dropped when results arrive faster than the name of the host is
/// found is said at `DatagramSender`: the oldest. Lives on the main thread.
class VRChatOutput : public Output {
  public:
    /// `settings` outlive the object. `lookUp` finds the addresses of host names.
    explicit VRChatOutput(const TranslationSettings& settings, LookUpHost lookUp = systemLookUp);
    ~VRChatOutput() override;

    VRChatOutput(const VRChatOutput&) = delete;
    VRChatOutput& operator=(const VRChatOutput&) = delete;

    /// The text of a result as the settings want it; empty when there is none.
    QString vrchatMessage(const Result& result) const;

    void take(const Result& result) override { sendToVRChat(result); }

    /// Sends a result where the settings say, if they say so.
    void sendToVRChat(const Result& result);

    /// Sends a fixed text where the settings say, also while the output is off.
    void sendVRChatTest();

    /// Sends one message. The port is taken to the nearest valid one. Callable from any thread;
    /// called on another one, it does so later.
    void sendOSCChatbox(const QString& message, bool playSound, const QString& host,
                        std::int64_t port);

  private:
    void sendWithSettings(const QString& message);

    const TranslationSettings& settings_;
    LookUpHost lookUp_;
    std::unique_ptr<DatagramSender> sender_; ///< Made on first use.
    PostTarget main_;
};

} // namespace orv
