#pragma once

#include "PostTarget.h"
#include "RunningApp.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace orv {

class SerialQueue;

/// Where running programs and installed applications are found.
struct RunningAppPlaces {
    QString processes = QStringLiteral("/proc");
    QStringList
        applications;      ///< Folders of ".desktop" files; the first one to name a program wins.
    qint64 ownProcess = 0; ///< Never listed.

    /// This machine's, from the XDG variables.
    static RunningAppPlaces ofThisMachine();
};

/// The user's running programs that have a desktop entry, sorted by name, each once. The identifier
/// is the program's file name. Reads the disk.
QList<RunningApp> scanRunningApps(const RunningAppPlaces& places);

/// Looks for running programs on the queue for files.
class RunningAppScanner {
  public:
    /// The queue outlives the scanner. Answers go to the current thread.
    RunningAppScanner(SerialQueue& disk, RunningAppPlaces places);

    /// Calls `done` later on the thread of `context`, which is the scanner's, unless `context` or
    /// the scanner is destroyed before.
    void scan(QObject* context, std::function<void(const QList<RunningApp>&)> done);

  private:
    SerialQueue& disk_;
    const RunningAppPlaces places_;
    PostTarget back_;
};

} // namespace orv
