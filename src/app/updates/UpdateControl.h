#pragma once

#include <QString>

#include <functional>

class QObject;

namespace orv {

/// What one check for a newer release found out.
enum class UpdateOutcome {
    Available, ///< `availableVersion` tells which.
    UpToDate,
    Failed,   ///< Nobody could be asked.
    NoSource, ///< There is nobody to ask: this build was given no address that leads anywhere.
};

/// The update check as the settings window sees it. Main thread only.
class UpdateControl {
  public:
    virtual ~UpdateControl() = default;

    /// The running program's version.
    virtual QString currentVersion() const = 0;

    /// The newer release that is known of, from whichever check; empty without one.
    virtual QString availableVersion() const = 0;

    /// Calls `changed` on the main thread whenever `availableVersion` is another one, as long as
    /// `context` lives: the program also checks by itself.
    virtual void follow(QObject* context, std::function<void()> changed) = 0;

    /// Asks now; returns at once. `done` is called once, later, on the main thread.
    virtual void checkForUpdate(std::function<void(UpdateOutcome outcome)> done) = 0;

    /// Opens the newer release's address in the browser.
    virtual void openDownload() = 0;
};

} // namespace orv
