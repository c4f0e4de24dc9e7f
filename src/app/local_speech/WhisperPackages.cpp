#include "WhisperPackages.h"

#include "BackendInstaller.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

WhisperPackages::WhisperPackages(LocalSpeechEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , tool_(environment_)
    , deleter_(environment_) {
    connect(&deleter_, &ServerTool::ended, this, &WhisperPackages::deleted);
    connect(&tool_, &ServerTool::ended, this, &WhisperPackages::looked);
}

WhisperPackages::~WhisperPackages() = default;

void WhisperPackages::refresh(const QString& model) {
    ORV_ON_MAIN();
    model_ = model;
    // An environment that is being exchanged would tell of the one before.
    if (tool_.isRunning() || isAtWork()) {
        isToLookAgain_ = true;
        return;
    }
    isToLookAgain_ = false;
    tool_.run(u"manage_whisper.py"_s, {u"status"_s, u"--model"_s, model_});
}

void WhisperPackages::looked(int status, const QByteArray& printed) {
    const std::optional<WhisperInventory> told =
        status == 0 ? parseWhisperInventory(printed) : std::nullopt;
    // Without a server there is nothing; what one has that does not tell, as older ones, nobody
    // knows.
    const bool wasKnown =
        std::exchange(isKnown_, told || !QFileInfo::exists(environment_.interpreter));
    const WhisperInventory before = std::exchange(inventory_, told.value_or(nothingOfWhisper()));
    if (before != inventory_ || wasKnown != isKnown_) {
        Q_EMIT changed();
    }
    if (isToLookAgain_) {
        refresh(model_);
    }
}

WhisperPackages::Work WhisperPackages::work(const QString& package) const {
    return package == package_ ? work_ : Work::None;
}

QString WhisperPackages::step() const {
    return installer_ ? installer_->step() : QString();
}

std::optional<int> WhisperPackages::percent() const {
    return installer_ ? installer_->percent() : std::nullopt;
}

void WhisperPackages::install(const QString& package) {
    change(package, Work::Installing, u"--with"_s);
}

void WhisperPackages::remove(const QString& package) {
    change(package, Work::Removing, u"--without"_s);
}

void WhisperPackages::change(const QString& package, Work work, const QString& option) {
    ORV_ON_MAIN();
    if (isAtWork() || !canChange()) {
        return;
    }
    package_ = package;
    work_ = work;
    isGivenUp_ = false;
    failures_.remove(package);
    installer_ = std::make_unique<BackendInstaller>(
        ChildCommand{.program = environment_.installer,
                     .arguments = {option, package},
                     .environment = environmentWith(ownEnvironment(), "HOME",
                                                    QFile::encodeName(environment_.home))},
        environment_.pause, environment_.log);
    connect(installer_.get(), &BackendInstaller::stepChanged, this, &WhisperPackages::changed);
    connect(installer_.get(), &BackendInstaller::percentChanged, this, &WhisperPackages::changed);
    connect(installer_.get(), &BackendInstaller::ended, this, &WhisperPackages::changeEnded);
    installer_->install();
    Q_EMIT changed();
}

void WhisperPackages::changeEnded(bool done, const QString& reason) {
    ORV_ON_MAIN();
    if (!installer_) {
        return;
    }
    // Not here and now: it is the installer that tells. It is a child until then.
    installer_->setParent(this);
    installer_.release()->deleteLater();
    const QString package = std::exchange(package_, {});
    work_ = Work::None;
    const bool hasFailed = !done && !isGivenUp_;
    if (hasFailed) {
        failures_.insert(package, reason);
    }
    Q_EMIT changed();
    refresh(model_);
    if (hasFailed) {
        Q_EMIT failed(package, reason);
    }
}

void WhisperPackages::deleteModel(const QString& id) {
    ORV_ON_MAIN();
    toDelete_.append(id);
    if (toDelete_.size() == 1) {
        deleteNext();
    }
}

void WhisperPackages::deleteNext() {
    deleter_.run(u"manage_whisper.py"_s, {u"delete"_s, toDelete_.constFirst()});
}

void WhisperPackages::deleted(int status, const QByteArray& printed) {
    const QString id = toDelete_.takeFirst();
    if (!toDelete_.isEmpty()) {
        deleteNext();
    }
    refresh(model_);
    Q_EMIT modelDeleted(id, status == 0 ? QString() : QString::fromUtf8(printed).trimmed());
}

void WhisperPackages::giveUp() {
    ORV_ON_MAIN();
    if (installer_) {
        isGivenUp_ = true;
        installer_->giveUp();
    }
}

} // namespace orv
