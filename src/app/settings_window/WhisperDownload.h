#pragma once

#include "DownloadOutput.h"
#include "PostTarget.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

namespace orv {

class ChildProcess;

/// What downloads run, and where they put what they fetch.
struct DownloadPrograms {
    QString interpreter; ///< The Python that has the recognition library.
    QString script;      ///< The speech server's own for downloads; older servers have none.
    QString cacheFolder; ///< Where the library keeps its models.
    /// How long a program that is given up gets to end.
    std::chrono::milliseconds pause = std::chrono::seconds(1);
};

/// The way of one model onto this computer, by two programs, one after the other. The script
/// fetches the file, goes on with what an earlier download has left, and gives it its name when it
/// is whole. Then the recognition library loads the model, which proves that it can; without a
/// script it fetches it, too. Main thread only.
class WhisperDownload : public QObject {
    Q_OBJECT

  public:
    WhisperDownload(DownloadPrograms programs, QString id, QObject* parent = nullptr);

    /// Ends what runs, and waits for that as long as it may take by the programs' `pause`; what is
    /// stubborn is ended by its lifeline. What has come so far stays for another download.
    ~WhisperDownload() override;

    /// Begins, once. Returns why it cannot; empty otherwise.
    QString start();

    /// Tells what runs to end, without waiting.
    void giveUp();

    /// How much is there, of 100; nothing when nobody tells.
    std::optional<int> percent() const { return output_.percent(); }

    /// Every byte is there and is being checked, or loaded.
    bool isChecking() const { return isFetched_ || percent() == 100; }

  Q_SIGNALS:
    void progressed();

    /// The last thing that happens. `problem` is empty when the model is there and loads. The
    /// receiver does not destroy the object, but may let it be destroyed later.
    void ended(const QString& problem);

  private:
    QString fetch();
    QString load(const QString& script);
    QString run(const QStringList& arguments, void (WhisperDownload::*finished)(int status));
    void printed(const QByteArray& bytes);
    void fetched(int status);
    void loaded(int status);
    QString reason(int status) const;

    const DownloadPrograms programs_;
    const QString id_;
    DownloadOutput output_; ///< Of the program that runs.
    bool isFetched_ = false;
    std::unique_ptr<ChildProcess> process_;
    PostTarget printed_; ///< Takes what the reading thread hands over.
};

} // namespace orv
