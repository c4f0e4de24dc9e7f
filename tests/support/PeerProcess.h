#pragma once

#include <QByteArray>
#include <QList>
#include <QSocketNotifier>
#include <QStringList>

#include <memory>
#include <sys/types.h>

namespace orv::test {

/// A script in a process of its own that is spoken to line by line. Ends with the object: its
/// standard input closes, and it is waited for.
///
/// Not a QProcess: the thread sanitizer loses sight of a thread's locks once it has started one.
class PeerProcess {
  public:
    /// Runs /usr/bin/python3 with these arguments. What it prints to standard error is shown.
    explicit PeerProcess(const QStringList& arguments);
    ~PeerProcess();

    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;

    /// The whole lines printed since the last call, without line feeds. Never waits.
    QList<QByteArray> readLines();

    /// Sends a line. Waits while the script does not read, but takes what it prints meanwhile.
    void writeLine(const QByteArray& line);

    void signal(int number) const;

  private:
    void drain();

    pid_t process_ = -1;
    int input_ = -1;  ///< Our end of the script's standard input.
    int output_ = -1; ///< Our end of its standard output.
    QByteArray unread_;
    /// Takes what the script prints while the event loop runs: a full pipe would stop the script.
    std::unique_ptr<QSocketNotifier> readable_;
};

} // namespace orv::test
