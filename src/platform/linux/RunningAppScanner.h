#pragma once

#include "PostTarget.h"
#include "RunningApp.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace orv {

class DesktopEntries;
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
QList<RunningApp> scanRunningApps(const RunningAppPlaces& places, DesktopEntries& entries);

/// Looks for running programs on the queue for files: once for all who ask meanwhile, and never
/// twice at a time. Lives on the main thread.
class RunningAppScanner {
  public:
    /// The queue outlives the scanner. Answers go to the current thread.
    RunningAppScanner(SerialQueue& disk, RunningAppPlaces places);

    /// Calls `done` later on the thread of `context`, which is the scanner's, unless `context` or
    /// the scanner is destroyed before.
    void scan(QObject* context, std::function<void(const QList<RunningApp>&)> done);

    /// How many looks have been begun.
    int looks() const { return looks_; }

  private:
    struct Question {
        QPointer<QObject> context;
        std::function<void(const QList<RunningApp>&)> done;
    };

    void begin();

    SerialQueue& disk_;
    const RunningAppPlaces places_;
    std::shared_ptr<DesktopEntries> entries_; ///< Touched on the queue only.
    std::vector<Question> waiting_;           ///< For the next look.
    bool isScanning_ = false;
    int looks_ = 0;
    PostTarget back_;
};

} // namespace orv
