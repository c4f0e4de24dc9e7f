#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace orv {

/// The handler of SIGTERM, SIGINT and SIGHUP: turns them into a signal of Qt's on the main thread,
/// so that being told to end is an orderly ending. One object at a time; destroying it gives the
/// signals their default meaning.
class TerminationSignals : public QObject {
    Q_OBJECT

  public:
    /// Leaves the signals alone when the system refuses a pipe.
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

  Q_SIGNALS:
    /// The program was told to end. Once for each time.
    void requested();

  private:
    int readEnd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace orv
