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
/// quitting. Lives on the main thread; nothing here blocks.
class TranslationController : public QObject {
    Q_OBJECT

  public:
    explicit TranslationController(ControllerEnvironment environment, QObject* parent = nullptr);

    bool isTranslating() const { return isTranslating_; }

    /// True while the last audio of a stopped run is still being processed.
    bool isStopping() const { return isStopping_; }

    /// Starts a run with what the settings say. Refused, with an alert, when the backend does not
    /// run, or when one application is to be captured and none is chosen; nothing changes then.
    /// Does nothing while translating.
    void startTranslation();

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
    };

    /// Comes before the hand-over: stopping resets the gain.
    void stopOldCapture();
    void handOver();
    void showAlert(const QString& titleKey, const QString& messageKey);

    ControllerEnvironment environment_;
    QTimer captureStart_;
    Run run_; ///< What `captureStart_` starts.
    bool isTranslating_ = false;
    bool isStopping_ = false;
    unsigned stopNumber_ = 0; ///< Tells the end of the latest stop from that of an earlier one.
};

} // namespace orv
