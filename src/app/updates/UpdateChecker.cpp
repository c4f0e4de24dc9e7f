#include "UpdateChecker.h"

#include "DesktopOpener.h"
#include "EventLoopThread.h"
#include "Log.h"
#include "ManifestFetcher.h"
#include "PostTarget.h"
#include "Version.h"
#include "WebAddress.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

/// The thread with the network on it. Answers come back through `results`.
struct UpdateChecker::Fetching {
    PostTarget results;
    std::unique_ptr<ManifestFetcher> fetcher; ///< Lives on `thread`.
    EventLoopThread thread{u"update-check"_s};

    ~Fetching() {
        thread.sync([this] { fetcher.reset(); });
    }
};

UpdateChecker::UpdateChecker(UpdateEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment)) {
    schedule_.setTimerType(Qt::VeryCoarseTimer);
    schedule_.setInterval(environment_.timings.interval);
    connect(&schedule_, &QTimer::timeout, this, [this] { checkForUpdate(); });
    schedule_.start();
    UpdateChecker::checkForUpdate({});
}

UpdateChecker::~UpdateChecker() = default;

UpdateChecker& UpdateChecker::shared() {
    return SharedInstance<UpdateChecker>::get();
}

void UpdateChecker::checkForUpdate(std::function<void(UpdateOutcome outcome)> done) {
    if (done) {
        waiting_.push_back(std::move(done));
    }
    if (!std::exchange(checking_, true)) {
        QTimer::singleShot(0, this, [this] { ask(0); });
    }
}

void UpdateChecker::ask(qsizetype index) {
    if (index >= environment_.updateURLs.size()) {
        finish(UpdateOutcome::Failed);
        return;
    }
    const auto url = webAddress(environment_.updateURLs.at(index));
    if (!url) {
        addressFailed(index, u"keine Webadresse"_s);
    } else if (leadsNowhere(*url)) {
        addressFailed(index, u"Host nicht gefunden"_s);
    } else {
        fetch(index);
    }
}

void UpdateChecker::fetch(qsizetype index) {
    if (!fetching_) {
        fetching_ = std::make_unique<Fetching>();
    }
    const auto answered = [this, index](const DecodedUpdateInfo& result) {
        if (result.error.isEmpty()) {
            manifestArrived(result.info);
        } else {
            addressFailed(index, result.error);
        }
    };
    fetching_->thread.post([fetching = fetching_.get(), answered,
                            address = environment_.updateURLs.at(index),
                            limit = environment_.timings.answer,
                            agent = QByteArray("Orvane/" + environment_.currentVersion.toUtf8())] {
        if (!fetching->fetcher) {
            fetching->fetcher = std::make_unique<ManifestFetcher>(agent);
        }
        const auto hand = [answered,
                           results = fetching->results.handle()](const DecodedUpdateInfo& result) {
            results.post([answered, result] { answered(result); });
        };
        fetching->fetcher->fetch(webAddress(address).value_or(QUrl()), limit, hand);
    });
}

void UpdateChecker::addressFailed(qsizetype index, const QString& error) {
    logLine(u"Update: " % environment_.updateURLs.at(index) % u" failed: " % error);
    ask(index + 1);
}

void UpdateChecker::manifestArrived(const UpdateInfo& info) {
    const QString& current = environment_.currentVersion;
    if (!isNewer(info.version, current)) {
        logLine(u"Update: up to date (" % current % u')');
        finish(UpdateOutcome::UpToDate);
        return;
    }
    publish(info);
    logLine(u"Update: " % info.version % u" available (current: " % current % u')');
    finish(UpdateOutcome::Available);
}

void UpdateChecker::publish(const UpdateInfo& info) {
    const UpdateInfo before = std::exchange(latest_, info);
    if (before.version != info.version) {
        Q_EMIT latestVersionChanged(info.version);
    }
    if (before.url != info.url) {
        Q_EMIT downloadURLChanged(info.url);
    }
    if (before.notes != info.notes) {
        Q_EMIT releaseNotesChanged(info.notes);
    }
    if (!std::exchange(updateAvailable_, true)) {
        Q_EMIT updateAvailableChanged(true);
    }
}

void UpdateChecker::finish(UpdateOutcome outcome) {
    // Not here: this may be called by what came through the target inside.
    QTimer::singleShot(0, this, [this] {
        if (!checking_) {
            fetching_.reset();
        }
    });
    checking_ = false;
    for (const auto& done : std::exchange(waiting_, {})) {
        done(outcome);
    }
}

void UpdateChecker::follow(QObject* context, std::function<void()> changed) {
    connect(this, &UpdateChecker::latestVersionChanged, context, changed);
    connect(this, &UpdateChecker::updateAvailableChanged, context, changed);
}

void UpdateChecker::openDownload() {
    if (webAddress(latest_.url)) {
        environment_.opener.openAddress(latest_.url);
    }
}

} // namespace orv
