#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace orv {

/// The handler of SIGTERM, SIGINT and SIGHUP: turns them into a call on the main thread, so that
/// being told to end is an orderly ending. One object at a time; destroying it gives the signals
/// their default meaning.
class TerminationSignals : public QObject {
    Q_OBJECT

  public:
    /// Calls `requested` for each signal. Leaves the signals alone when the system refuses a pipe.
    explicit TerminationSignals(std::function<void()> requested, QObject* parent = nullptr);
    ~TerminationSignals() override;

  private:
    int readEnd_ = -1;
    std::function<void()> requested_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace orv
