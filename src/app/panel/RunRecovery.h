#pragma once

#include "RunProgress.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <vector>

namespace orv {

class AudioManager;
class TranslationController;
class TranslationEngine;
class TranslationSettings;

/// The fixed times of getting a run going again.
struct RecoveryTimings {
    /// Before the first, second, ... time that an interrupted run is continued by itself; the last
    /// one counts for all that follow.
    std::vector<std::chrono::milliseconds> pauses = {
        std::chrono::seconds(1), std::chrono::seconds(2), std::chrono::seconds(5),
        std::chrono::seconds(10), std::chrono::seconds(30)};
    std::chrono::milliseconds lasting{30000}; ///< A run that goes well for so long has recovered.
};

/// What the recovery works on. The references outlive it.
struct RecoveryEnvironment {
    const TranslationSettings& settings;
    AudioManager& audio;
    TranslationEngine& backend;
    TranslationController& controller;
    RecoveryTimings timings = {};
};

/// The way out of an interrupted run: one that is meant to be on, but has lost its link, its engine
/// or its source. Tells of the interruption, and does whatever is needed to go on when it is asked,
/// or, if the user wants that, by itself. Sound of the gap is not recognised afterwards. Lives on
/// the main thread.
class RunRecovery : public QObject {
    Q_OBJECT

  public:
    explicit RunRecovery(RecoveryEnvironment environment);

    bool isInterrupted() const { return isInterrupted_; }

    /// The run as it was when it was interrupted last.
    const RunProgress& interruption() const { return interruption_; }

    /// True from `continueRun` until it is known what came of it.
    bool isContinuing() const { return isContinuing_; }

    /// Starts the speech server if it does not run, and then the run again. Does nothing unless
    /// interrupted.
    void continueRun();

  Q_SIGNALS:
    void changed();     ///< `isInterrupted`, `interruption`, `isContinuing`.
    void interrupted(); ///< Once for each interruption, however often it is tried to go on.

  private:
    void followRun();
    void followBackend();
    void recovered();
    void continueLater();
    void setContinuing(bool isContinuing);

    const RecoveryEnvironment environment_;
    RunProgress interruption_;
    bool isInterrupted_ = false;
    bool isContinuing_ = false;
    bool waitsForBackend_ = false;
    std::size_t attempts_ = 0; ///< By itself, since the run last went well.
    QTimer continueLater_;
    QTimer lasting_;
};

} // namespace orv
