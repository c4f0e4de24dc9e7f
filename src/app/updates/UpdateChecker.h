#pragma once

#include "SharedInstance.h"
#include "UpdateControl.h"
#include "UpdateInfo.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orv {

class DesktopOpener;
class ManifestFetcher;

/// The update check's fixed times.
struct UpdateTimings {
    std::chrono::milliseconds answer{3000};                     ///< For the whole of one manifest.
    std::chrono::milliseconds interval{std::chrono::hours(24)}; ///< Between two checks.
};

/// What the checker is given. The opener outlives it.
struct UpdateEnvironment {
    QString currentVersion;
    QStringList updateURLs; ///< Addresses of manifests, in the order in which they are asked.
    DesktopOpener& opener;
    UpdateTimings timings = {};
};

/// Finds out whether a newer release exists: once after it is made, then every 24 hours, and
/// whenever asked. Lives on the main thread and never waits.
class UpdateChecker : public QObject, public UpdateControl {
    Q_OBJECT

  public:
    explicit UpdateChecker(UpdateEnvironment environment, QObject* parent = nullptr);

    /// A check that is under way ends without a result.
    ~UpdateChecker() override;

    /// The process-wide instance: the one there is. Nothing inside the libraries asks for it.
    static UpdateChecker& shared();

    /// True from the first newer release that was found on.
    bool updateAvailable() const { return updateAvailable_; }

    QString latestVersion() const { return latest_.version; }

    QString downloadURL() const { return latest_.url; }

    QString releaseNotes() const { return latest_.notes; }

    QString currentVersion() const override { return environment_.currentVersion; }

    QString availableVersion() const override {
        return updateAvailable_ ? latest_.version : QString();
    }

    void follow(QObject* context, std::function<void()> changed) override;

    QStringList updateURLs() const { return environment_.updateURLs; }

    /// Asks the manifests in order until one answers, and prints what came of it. `done` is called
    /// later, once, unless the checker goes first. A check that is under way serves further
    /// callers, too.
    void checkForUpdate(std::function<void(UpdateOutcome outcome)> done = {}) override;

    /// Opens `downloadURL` in the default browser; does nothing unless it is a web address.
    void openDownload() override;

  Q_SIGNALS:
    void updateAvailableChanged(bool updateAvailable);
    void latestVersionChanged(const QString& latestVersion);
    void downloadURLChanged(const QString& downloadURL);
    void releaseNotesChanged(const QString& releaseNotes);

  private:
    bool hasSource() const;
    void ask(qsizetype index);
    void answered(const DecodedUpdateInfo& result);
    void addressFailed(qsizetype index, const QString& error);
    void manifestArrived(const UpdateInfo& info);
    void publish(const UpdateInfo& info);
    void finish(UpdateOutcome outcome);

    const UpdateEnvironment environment_;
    bool updateAvailable_ = false;
    UpdateInfo latest_;
    QTimer schedule_;
    bool checking_ = false;
    std::vector<std::function<void(UpdateOutcome)>> waiting_;
    qsizetype asked_ = 0; ///< Whose answer is waited for.
    std::unique_ptr<ManifestFetcher> fetcher_;
    SharedInstance<UpdateChecker> sharedInstance_{*this};
};

} // namespace orv
