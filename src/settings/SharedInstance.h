#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace orv {

/// The holder behind a class's `shared()`: one instance, made on first use by what the composition
/// root has installed. Thread-safe; whoever comes while the instance is being made waits for it, so
/// the factory must not ask for the same instance.
template <typename Object>
class SharedInstance {
  public:
    using Factory = std::function<std::unique_ptr<Object>()>;

    /// Puts `factory` in place and destroys an instance that an earlier one has made. An empty
    /// factory leaves nothing to be asked for: the composition root installs it at the end.
    void install(Factory factory) {
        std::unique_ptr<Object> earlier; // Outlives the lock: destroyed without it.
        const std::lock_guard lock(mutex_);
        factory_ = std::move(factory);
        earlier = std::move(instance_);
    }

    /// The instance. Asking before a factory is installed is a programming error and ends the
    /// program.
    Object& get() {
        const std::lock_guard lock(mutex_);
        if (!instance_) {
            if (!factory_) {
                qFatal("A shared instance was asked for before it was installed.");
            }
            instance_ = factory_();
        }
        return *instance_;
    }

  private:
    std::mutex mutex_;
    Factory factory_;
    std::unique_ptr<Object> instance_;
};

} // namespace orv
