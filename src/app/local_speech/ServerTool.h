#pragma once

#include "ChildProcess.h"
#include "LocalSpeechEnvironment.h"
#include "PostTarget.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace orv {

/// Runs the speech server's own programs, one at a time, and gathers what they print. Main thread
/// only, which it never holds up.
class ServerTool : public QObject {
    Q_OBJECT

  public:
    explicit ServerTool(const LocalSpeechEnvironment& environment, QObject* parent = nullptr);

    /// Ends what runs.
    ~ServerTool() override;

    bool isRunning() const { return bool(process_); }

    /// Runs `program` of the server's folder. Nothing else may be running.
    void run(const QString& program, const QStringList& arguments);

  Q_SIGNALS:
    /// It is over. The status is the exit code, or the number of the signal that ended it; -1 says
    /// that it could not be started, and then `printed` is why. At most 1 MiB is gathered.
    void ended(int status, const QByteArray& printed);

  private:
    void finish(int status);

    const LocalSpeechEnvironment environment_;
    QByteArray printed_;
    std::unique_ptr<ChildProcess> process_;
    PostTarget reader_; ///< Takes what the reading thread hands over.
};

} // namespace orv
