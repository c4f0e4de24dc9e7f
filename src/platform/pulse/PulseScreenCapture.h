#pragma once

#include "AudioCapture.h"
#include "BlockMixer.h"
#include "PulseConnection.h"
#include "PulseRecordStream.h"
#include "RunningAppScanner.h"

#include <QObject>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

namespace orv {

/// Capture of what the machine plays: of the default sink's monitor, whichever it is at the time,
/// or of the monitors of one application's playback streams, whichever there are.
class PulseScreenCapture final : public ScreenCaptureStream, private PulseListener {
  public:
    PulseScreenCapture(std::shared_ptr<PulseConnection> connection,
                       std::shared_ptr<RunningAppScanner> scanner, Listener& listener);
    ~PulseScreenCapture() override;

    void start(const ScreenCaptureRequest& request) override;
    void stop(Answer<const QString&> done) override;

  private:
    class Tap;

    // On the loop's thread, or with its lock held.
    void pulseLost() override;
    void pulseChanged(PulseChange change) override;
    void begin(const QList<RunningApp>& runningApps);
    void startApplication(const QList<RunningApp>& runningApps);
    void takeUp();
    void takeUpSink();
    void takeUpPlaybacks();
    void adjustStreams(const std::map<std::uint32_t, PulseRecording>& wanted);
    void openStream(std::uint32_t id, const PulseRecording& recording);
    void streamReady();
    void streamEnded(std::uint32_t id, const QString& error);
    void tick();
    void finishStart();
    void failStart(const QString& error);
    void tellStarted();
    void release();

    std::shared_ptr<PulseConnection> connection_;
    std::shared_ptr<RunningAppScanner> scanner_;
    Listener& listener_;
    QObject context_; ///< What the listener's calls are posted to; lives where this object does.

    bool isStopped_ = false; ///< Of the owner's thread: what is still on its way is dropped.

    ScreenCaptureRequest request_;
    ScreenCaptureStart outcome_;
    bool isStarting_ = false;         ///< `start` is not answered yet.
    std::optional<BlockMixer> mixer_; ///< There from `start` until the capture is over.
    std::map<std::uint32_t, std::unique_ptr<Tap>> streams_;
    PulseTimer ticker_;
    PulseTimer retake_;
    bool askingForStreams_ = false;
    bool askAgain_ = false;
};

} // namespace orv
