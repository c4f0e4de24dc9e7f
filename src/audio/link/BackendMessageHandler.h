#pragma once

#include "AudioNotice.h"
#include "BackendMessages.h"

#include <QString>

#include <functional>

namespace orv {

/// Does what a message of the backend asks for, and says so in the log. Lives on the main thread.
class BackendMessageHandler {
  public:
    /// Run on the main thread, inside `handle`.
    struct Actions {
        /// Whether an empty translation is to be made on this side, asked for each such result.
        std::function<bool()> translatesOnClient;
        /// Translates and then publishes by itself.
        std::function<void(const QString& original)> translateOnClient;
        std::function<void(const Result& result)> publishResult;
        std::function<void(const StatusMessage& status)> publishStatus;
        std::function<void(const AudioNotice& notice)> showNotice;
        std::function<void()> flushed;
    };

    explicit BackendMessageHandler(Actions actions);

    void handle(const DownstreamMessage& message);

  private:
    void handleStatus(const StatusMessage& status);

    Actions actions_;
};

} // namespace orv
