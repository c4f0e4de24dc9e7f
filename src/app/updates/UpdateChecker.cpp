#include "UpdateChecker.h"

#include "DesktopOpener.h"
#include "Log.h"
#include "ManifestFetcher.h"
#include "ThreadChecks.h"
#include "Version.h"
#include "WebAddress.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

UpdateChecker::UpdateChecker(UpdateEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , fetcher_(
          std::make_unique<ManifestFetcher>("Orvane/" + environment_.currentVersion.toUtf8())) {
    connect(fetcher_.get(), &ManifestFetcher::fetched, this, &UpdateChecker::answered);
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
    ORV_ON_MAIN();
    if (done) {
        waiting_.push_back(std::move(done));
    }
    if (!std::exchange(checking_, true)) {
        QTimer::singleShot(0, this, [this] { ask(0); });
    }
}

void UpdateChecker::ask(qsizetype index) {
    if (index >= environment_.updateURLs.size()) {
        finish(hasSource() ? UpdateOutcome::Failed : UpdateOutcome::NoSource);
        return;
    }
    const auto url = webAddress(environment_.updateURLs.at(index));
    if (!url) {
        addressFailed(index, u"keine Webadresse"_s);
    } else if (leadsNowhere(*url)) {
        addressFailed(index, u"Host nicht gefunden"_s);
    } else {
        asked_ = index;
        fetcher_->fetch(*url, environment_.timings.answer);
    }
}

bool UpdateChecker::hasSource() const {
    return std::ranges::any_of(environment_.updateURLs, [](const QString& address) {
        const auto url = webAddress(address);
        return !url || !leadsNowhere(*url);
    });
}

void UpdateChecker::answered(const DecodedUpdateInfo& result) {
    if (result.error.isEmpty()) {
        manifestArrived(result.info);
    } else {
        addressFailed(asked_, result.error);
    }
}

void UpdateChecker::addressFailed(qsizetype index, const QString& error) {
    logLine(u"Update: " % environment_.updateURLs.at(index) % u" failed: " % error);
    ask(index + 1);
}

void UpdateChecker::manifestArrived(const UpdateInfo& info) {
    const QString& current = environment_.currentVersion;
    if (!isNewerVersion(info.version, current)) {
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
