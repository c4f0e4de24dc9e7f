#pragma once

#include "BackendMessages.h"
#include "TextLookup.h"
#include "WhisperDownload.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace orv {

class Dialogs;
class FileJobs;
class WhisperPackages;

/// What the manager is given. The references outlive it.
struct WhisperEnvironment {
    DownloadPrograms programs;
    FileJobs& files;
    Dialogs& dialogs;
    TextLookup text;
    /// Knows which package serves and what that one has; null: openai-whisper, and nothing else.
    WhisperPackages* packages = nullptr;
    std::function<QString()> chosenModel = [] { return QString(); }; ///< In the settings.
};

/// The manager of the local recognition's models: knows which are on this computer, fetches and
/// removes them. Downloads run as programs of their own, any number at the same time but one for
/// each model, and end with the manager. What goes wrong is shown in an alert. Main thread only.
///
/// A model is on this computer when the speech server says so, or when a file of it is there under
/// its final name, unless the file shows that it is not whole: a download's part lies beside it, or
/// it is an archive without its end (see ModelArchive.h), as the library leaves behind when it
/// fetches a model itself and is broken off. The program's own downloads give a file that name only
/// when its digest is right.
class WhisperModelManager : public QObject {
    Q_OBJECT

  public:
    enum class State {
        Absent,
        Downloading, ///< A download is running, whatever is on the disk.
        Checking,    ///< The same, with every byte there.
        Downloaded,
        Removing,
        Partial,  ///< A download was broken off; another goes on with what it left.
        Unusable, ///< It is there, and damaged; a download repairs it.
        Failed,   ///< The latest download has; another goes on with what it left.
    };

    explicit WhisperModelManager(WhisperEnvironment environment, QObject* parent = nullptr);
    ~WhisperModelManager() override;

    State state(const QString& id) const;

    /// Whether a download can work: not before there is a package that loads what comes.
    bool canDownload() const;

    /// How much of a model that is being fetched is there, of 100; nothing while nobody tells.
    std::optional<int> percent(const QString& id) const;

    /// Whether this is the model that serves, be it the chosen one or not.
    bool isUsed(const QString& id) const;

    /// Why another model than the chosen one serves, or none; empty where that is not so, or not
    /// known.
    StatusMessage whyOther() const;

    /// Why the latest download of a model has failed, for people; empty if it has not.
    QString failure(const QString& id) const { return failures_.value(id); }

    /// Whether any model is being fetched, or checked.
    bool isDownloading() const { return !downloads_.empty(); }

    /// Looks into the cache, and at what the packages have, in the background.
    void refreshDownloadedModels();

    /// Starts fetching a model that is not being fetched or removed already.
    void downloadWhisperModel(const QString& id);

    /// Removes a model's files, and what downloads have left of it, unless it is just being
    /// fetched.
    void deleteWhisperModel(const QString& id);

  Q_SIGNALS:
    /// A model has another state, or more of it is there.
    void changed();

  private:
    bool isAtWork(const QString& id) const;
    State stateOnDisk(const QString& id) const;
    QString servingPackage() const;
    void downloadEnded(const QString& id, const QString& problem);
    void downloadFailed(const QString& id, const QString& reason, const QString& message);
    void filesRemoved(const QString& id, const QString& problem);
    void removed(const QString& id, const QString& problem);
    void showFailure(const QString& titleKey, const QString& message);

    const WhisperEnvironment environment_;
    QSet<QString> downloaded_;
    QSet<QString> removing_;
    QHash<QString, QString> failures_; ///< Of models whose latest download has failed.
    std::map<QString, std::unique_ptr<WhisperDownload>> downloads_;
};

} // namespace orv
