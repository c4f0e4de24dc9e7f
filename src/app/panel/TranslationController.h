#pragma once

#include "BackendControl.h"
#include "CaptureControl.h"
#include "TextLookup.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>

namespace orv {

class Dialogs;
class Quit;
class TranslationSettings;

/// The fixed times of the control panel's flows.
struct ControllerTimings {
    /// From clearing away what ran before to capturing.
    std::chrono::milliseconds captureStart{200};
};

/// What the controller is given. The references outlive it.
struct ControllerEnvironment {
    TranslationSettings& settings;
    CaptureControl& capture;
    BackendControl& backend;
    Dialogs& dialogs;
    TextLookup text;
    Quit& quit;
    ControllerTimings timings = {};
};

/// Runs the flows behind the control panel's buttons: starting a translation, stopping it,
/// quitting. A source that is chosen during a run is listened to at once. Lives on the main thread;
/// nothing here blocks.
class TranslationController : public QObject {
    Q_OBJECT

  public:
    explicit TranslationController(ControllerEnvironment environment, QObject* parent = nullptr);

    bool isTranslating() const { return isTranslating_; }

    /// True while the last audio of a stopped run is still being processed.
    bool isStopping() const { return isStopping_; }

    /// Starts a run with what the settings say. Refused, with an alert, when the backend does not
    /// run, or when one application is to be captured and none is chosen; nothing changes then.
    /// Does nothing while translating, or when the program is about to end.
    void startTranslation();

    /// Starts the run again, from the same source and with what the settings say now. What has not
    /// been recognised of it is thrown away. Does nothing unless translating, with a backend that
    /// runs.
    void continueTranslation();

    /// Ends the run; the last words are still processed. Does nothing when not translating.
    void stopTranslation();

    /// The panel's Quit: ends a run, and then the program as `Quit` says.
    void quitApp();

  Q_SIGNALS:
    void subtitlesEnded(); ///< Nothing of the run is to be shown or spoken any more.
    void TranslationStatusChanged(bool isTranslating); ///< A run was started or stopped.
    void stateChanged();                               ///< `isTranslating`, `isStopping`.

  private:
    struct Run {
        AudioSourceType source = AudioSourceType::Microphone;
        QString deviceId;
        QString appBundleId;

        bool lacksApp() const;
        /// What a source does not need makes no difference.
        bool listensLike(const Run& other) const;
    };

    Run chosenRun() const;
    void followSource();

    /// Comes before the hand-over: stopping resets the gain.
    void stopOldCapture();
    void handOver();
    void beginCapture();
    void logSource(const QString& heading) const;
    void showAlert(const QString& titleKey, const QString& messageKey);

    ControllerEnvironment environment_;
    QTimer captureStart_;
    QTimer sourceChange_; ///< Ends when all settings of a choice have been assigned.
    Run run_;             ///< What `captureStart_` starts, and what is listened to then.
    bool isTranslating_ = false;
    bool isStopping_ = false;
    unsigned stopNumber_ = 0; ///< Tells the end of the latest stop from that of an earlier one.
};

} // namespace orv
