#pragma once

namespace orv {

/// What the application shell needs of the backend's supervisor; each operation means what the
/// supervisor's own means.
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
