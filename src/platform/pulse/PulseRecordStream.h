#pragma once

#include "PulseConnection.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace orv {

/// What is recorded, and in which shape. The sample format is always 32-bit float, interleaved.
struct PulseRecording {
    QByteArray source;                     ///< Empty with `playback`.
    std::optional<std::uint32_t> playback; ///< Only this playback stream's sound.
    std::uint32_t sampleRate = 48000;      ///< Hz.
    std::uint8_t channels = 2;
    std::optional<pa_channel_map> channelMap; ///< The source's own, to take channels unmixed.
    std::size_t fragmentFrames = 960;         ///< How much the server gathers before sending.
    bool paused = false;                      ///< Opens the source without taking data.
    bool mayMove = false;                     ///< The server may put the stream on another source.
};

/// One recording stream of the sound server. Created, used and destroyed on the loop's thread or
/// with a `PulseLock` held.
class PulseRecordStream {
  public:
    /// Who has the sound recorded. Called on the loop's thread, and never after the destruction.
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The stream is open. It may be destroyed in this call.
        virtual void recordingReady() = 0;

        /// The server has moved the recording to another source.
        virtual void recordingMoved(const QByteArray& /*source*/) {}

        /// `samples` is null for a hole in the recording; there is always at least one frame.
        virtual void recorded(const float* samples, std::size_t frames) = 0;

        /// The stream could not be opened, or is over. It may be destroyed in this call, and this
        /// object with it.
        virtual void recordingEnded(const QString& error) = 0;
    };

    /// Null, and `connection.lastError()`, when the stream cannot even be asked for.
    /// `listener` outlives the stream, `connection` as well.
    static std::unique_ptr<PulseRecordStream>
    open(const PulseConnection& connection, const PulseRecording& recording, Listener& listener);

    PulseRecordStream(const PulseRecordStream&) = delete;
    PulseRecordStream& operator=(const PulseRecordStream&) = delete;

  private:
    struct Release {
        void operator()(pa_stream* stream) const;
    };

    PulseRecordStream(pa_stream* stream, std::size_t channels, const PulseConnection& connection,
                      Listener& listener);
    void stateChanged();
    void readable();

    std::unique_ptr<pa_stream, Release> stream_;
    const std::size_t channels_;
    const PulseConnection& connection_;
    Listener& listener_;
};

} // namespace orv
