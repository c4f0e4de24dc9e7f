#pragma once

#include <QObject>

#include <chrono>
#include <functional>

namespace orv {

class BackendControl;

/// The fixed times of the program's end as its user asks for it.
struct QuitTimings {
    std::chrono::milliseconds secondStop{1500}; ///< From the menu's Quit to the second look.
    std::chrono::milliseconds terminate{500};   ///< From the second look to the end.
    std::chrono::milliseconds panel{1500};      ///< From the panel's Quit to the end.
};

/// Ends the program when its user asks for it, from the menu or from the panel. Both stop the
/// backend, whatever the settings say, and let nobody start one any more. Only the first request
/// counts. Lives on the main thread; nothing here blocks.
class Quit : public QObject {
    Q_OBJECT

  public:
    /// `backend` outlives the object.
    explicit Quit(BackendControl& backend, QuitTimings timings = {});

    /// True from the first request on: the program is about to end.
    bool isUnderWay() const { return isUnderWay_; }

    /// The menu's: stops a backend that still runs a second time, and ends the program after that.
    void fromMenu();

    /// The panel's: calls `stopRun`, stops the backend and ends the program.
    void fromPanel(const std::function<void()>& stopRun);

  Q_SIGNALS:
    /// Everything has had its time: the program is to end now.
    void terminationDue();

  private:
    BackendControl& backend_;
    const QuitTimings timings_;
    bool isUnderWay_ = false;
};

} // namespace orv
