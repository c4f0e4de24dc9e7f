#pragma once

#include "AudioIngest.h"
#include "AudioSender.h"
#include "AudioSourceType.h"
#include "CaptureSources.h"
#include "Chunker.h"
#include "LevelMeter.h"

#include <QObject>
#include <QString>
#include <QTimer>

namespace orv {

struct AudioEnvironment;

/// The source that a run listens to.
struct SourceChoice {
    AudioSourceType type = AudioSourceType::Microphone;
    QString deviceId;    ///< Counts for a microphone; empty: the default input.
    QString appBundleId; ///< Counts for a single application.
};

/// The way of captured sound: source, sample pipeline, chunker and sender, which serve one run
/// after the other. Lives on the main thread; sound passes through it on the capture thread and the
/// send queue. Pause detection follows its three settings at once.
class SoundPath : public QObject {
    Q_OBJECT

  public:
    /// `environment` outlives this object.
    explicit SoundPath(const AudioEnvironment& environment);

    /// Ends the capture, then sends what has been handed to the sender.
    ~SoundPath() override;

    /// How the next run scales the signal.
    void setGain(float gain, bool autoGain);

    /// Empties the path for a new run, whose sound goes to the speech server in chunks unless the
    /// run says otherwise.
    void prepare();

    /// Starts the source, the level meter and, without pause detection, the timer that sends
    /// chunks.
    void listen(const SourceChoice& source);

    /// Ends the capture. Whatever the source has delivered is in the chunker after the return.
    void stopListening();

    /// Throws away what is left of a run and takes nothing more for its link.
    void clear();

    // The stations, for the run that uses them.
    LevelMeter meter;
    Chunker chunker;
    AudioIngest ingest;
    CaptureSources sources;

  Q_SIGNALS:
    void levelChanged(); ///< `meter`.
    /// Sound has arrived; `isSpeech` tells whether some was above the threshold of pause detection.
    void soundArrived(bool isSpeech);

  private:
    void followPauseDetection();
    void setVadEnabled(bool enabled);
    void startSendTimer();
    void readMeter();

    const AudioEnvironment& environment_;
    float requestedGain_ = 1.0F;
    bool requestedAutoGain_ = false;
    QTimer sendTimer_;
    QTimer levelUpdateTimer_;

  public:
    AudioSender sender; ///< Declared last: it ends first, and its jobs use the chunker.
};

} // namespace orv
