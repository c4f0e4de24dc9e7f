#include "RunRecovery.h"

#include "AudioManager.h"
#include "ThreadChecks.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"

#include <algorithm>
#include <utility>

namespace orv {

namespace {

/// Whether a run with this trouble goes on only if something is done.
bool isInterruption(RunTrouble trouble) {
    return trouble == RunTrouble::LinkLost || trouble == RunTrouble::EngineLost ||
           trouble == RunTrouble::CaptureFailed || trouble == RunTrouble::CaptureEnded;
}

} // namespace

RunRecovery::RunRecovery(RecoveryEnvironment environment)
    : environment_(std::move(environment)) {
    ORV_ON_MAIN();
    continueLater_.setSingleShot(true);
    continueLater_.callOnTimeout(this, &RunRecovery::continueRun);
    lasting_.setSingleShot(true);
    lasting_.setInterval(environment_.timings.lasting);
    lasting_.callOnTimeout(this, [this] { attempts_ = 0; });
    connect(&environment_.audio, &AudioManager::progressChanged, this, &RunRecovery::followRun);
    connect(&environment_.controller, &TranslationController::stateChanged, this,
            &RunRecovery::followRun);
    connect(&environment_.backend, &TranslationEngine::isRunningChanged, this,
            &RunRecovery::followBackend);
    connect(&environment_.backend, &TranslationEngine::statusMessageChanged, this,
            &RunRecovery::followBackend);
    environment_.settings.continueAfterInterruption.watch(this, [this](bool /*wanted*/) {
        continueLater_.stop();
        if (isInterrupted_ && !isContinuing_) {
            continueLater();
        }
    });
}

void RunRecovery::followRun() {
    ORV_ON_MAIN();
    const RunProgress& progress = environment_.audio.progress();
    if (!environment_.controller.isTranslating()) {
        attempts_ = 0;
        recovered();
    } else if (isInterruption(progress.trouble)) {
        lasting_.stop();
        const bool isNews = !std::exchange(isInterrupted_, true);
        // While the speech server is being started, it is still the old run that is interrupted.
        const bool isAgain = !waitsForBackend_ && std::exchange(isContinuing_, false);
        interruption_ = progress;
        if (isNews || isAgain) {
            if (progress.trouble == RunTrouble::LinkLost) {
                environment_.backend.lookSoon();
            }
            continueLater();
        }
        Q_EMIT changed();
        if (isNews) {
            Q_EMIT interrupted();
        }
    } else if (isInterrupted_ &&
               (progress.soundArrived || progress.trouble == RunTrouble::NoSound)) {
        // Not before sound comes again, or is known not to: until then it is only known that a run
        // has been started.
        lasting_.start();
        recovered();
    }
}

void RunRecovery::recovered() {
    continueLater_.stop();
    waitsForBackend_ = false;
    isContinuing_ = false;
    if (std::exchange(isInterrupted_, false)) {
        Q_EMIT changed();
    }
}

void RunRecovery::continueLater() {
    // A source that has ended is taken up again by the run itself, and never turns into another.
    if (!environment_.settings.continueAfterInterruption.get() ||
        interruption_.trouble == RunTrouble::CaptureEnded) {
        return;
    }
    const auto& pauses = environment_.timings.pauses;
    continueLater_.start(pauses.at(std::min(attempts_, pauses.size() - 1)));
    ++attempts_;
}

void RunRecovery::continueRun() {
    ORV_ON_MAIN();
    if (!isInterrupted_ || isContinuing_) {
        return;
    }
    continueLater_.stop();
    setContinuing(true);
    if (environment_.backend.isRunning()) {
        environment_.controller.continueTranslation();
    } else {
        environment_.backend.startBackend();
        waitsForBackend_ = true; // Not before: what it tells meanwhile is no outcome.
        followBackend();
    }
}

void RunRecovery::followBackend() {
    ORV_ON_MAIN();
    if (!waitsForBackend_) {
        return;
    }
    if (environment_.backend.isRunning()) {
        waitsForBackend_ = false;
        environment_.controller.continueTranslation();
    } else if (!environment_.backend.isBusy()) {
        waitsForBackend_ = false; // It could not be started, and has said why.
        setContinuing(false);
        continueLater();
    }
}

void RunRecovery::setContinuing(bool isContinuing) {
    if (std::exchange(isContinuing_, isContinuing) != isContinuing) {
        Q_EMIT changed();
    }
}

} // namespace orv
