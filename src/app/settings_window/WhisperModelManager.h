#pragma once

#include "ChildProcess.h"
#include "TextLookup.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <map>
#include <memory>

namespace orv {

class Dialogs;
class FileJobs;

/// What the manager is given. The references outlive it.
struct WhisperEnvironment {
    QString interpreter; ///< Of the backend: the Python that has the recognition library.
    QString cacheFolder; ///< Where that library keeps its models.
    FileJobs& files;
    Dialogs& dialogs;
    TextLookup text;
    /// Between the signals to a download that has to be ended with the program.
    std::chrono::milliseconds pause = std::chrono::seconds(1);
};

/// The manager of the local recognition's models: knows which are on this computer, fetches and
/// removes them. Downloads run as programs of their own, any number at the same time but one for
/// each model, and end with the manager. What goes wrong is shown in an alert. Main thread only.
class WhisperModelManager : public QObject {
    Q_OBJECT

  public:
    enum class State {
        Absent,
        Downloading, ///< A download is running, whatever is on the disk.
        Downloaded,
        Removing,
    };

    explicit WhisperModelManager(WhisperEnvironment environment, QObject* parent = nullptr);
    ~WhisperModelManager() override;

    State state(const QString& id) const;

    /// Looks into the cache, in the background.
    void refreshDownloadedModels();

    /// Starts fetching a model that is not being fetched or removed already.
    void downloadWhisperModel(const QString& id);

    /// Removes a model's files, unless it is just being fetched.
    void deleteWhisperModel(const QString& id);

  Q_SIGNALS:
    /// A model has another state.
    void changed();

  private:
    void downloadFinished(const QString& id, int status, const QByteArray& output);
    void removed(const QString& id, const QString& problem);
    void showFailure(const QString& titleKey, const QString& message);

    const WhisperEnvironment environment_;
    QSet<QString> downloaded_;
    QSet<QString> removing_;
    std::map<QString, std::unique_ptr<ChildProcess>> downloads_;
    /// Receives the ends of downloads. The last member: nothing arrives once the rest is going.
    std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
};

} // namespace orv
