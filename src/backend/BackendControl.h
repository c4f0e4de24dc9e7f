#pragma once

namespace orv {

/// The interface of the backend's supervisor, `TranslationEngine`, for those who start and stop the
/// backend.
class BackendControl {
  public:
    virtual ~BackendControl() = default;

    virtual bool isRunning() const = 0;
    virtual void startBackend() = 0;
    virtual void stopBackend() = 0;
    /// Stops the backend, and no other one is started: the program is about to end.
    virtual void stopForGood() = 0;
    /// The program ends and the backend stays.
    virtual void leaveRunning() = 0;
};

} // namespace orv
