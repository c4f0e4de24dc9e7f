#pragma once

namespace orv {

/// The backend's supervisor as those see it who start and stop it: `TranslationEngine`.
class BackendControl {
  public:
    virtual ~BackendControl() = default;

    virtual bool isRunning() const = 0;
    virtual void startBackend() = 0;
    virtual void stopBackend() = 0;
    /// The program ends and the backend stays.
    virtual void leaveRunning() = 0;
};

} // namespace orv
