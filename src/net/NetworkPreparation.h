#pragma once

#include "PostTarget.h"
#include "SerialQueue.h"

#include <QObject>

#include <memory>

namespace orv {

/// Readies what connections to the internet need of the system before the first one: the TLS
/// library and its certificates, and the system's proxies. That takes tens of milliseconds, so it
/// is done away from the main thread; once in a process. Lives on the main thread.
class NetworkPreparation : public QObject {
    Q_OBJECT

  public:
    /// Whether it has been done, by whichever object.
    static bool isDone();

    /// Begins it, unless it is under way here. `ready` follows, though not within this call.
    void start();

  Q_SIGNALS:
    void ready();

  private:
    PostTarget home_;
    std::unique_ptr<SerialQueue> thread_; ///< While it is under way; its end is waited for.
};

} // namespace orv
