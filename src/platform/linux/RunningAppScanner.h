#pragma once

#include "Post.h"
#include "RunningApp.h"
#include "SerialQueue.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>

namespace orv {

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

/// Does that on a queue of its own.
class RunningAppScanner {
  public:
    explicit RunningAppScanner(RunningAppPlaces places);

    /// Calls `done` later on the thread of `context`, which is the caller's, unless `context` is
    /// destroyed before.
    void scan(QObject* context, std::function<void(const QList<RunningApp>&)> done);

  private:
    const RunningAppPlaces places_;
    QObject context_; ///< Carries answers to the thread that made this object.
    SerialQueue queue_;
};

} // namespace orv
