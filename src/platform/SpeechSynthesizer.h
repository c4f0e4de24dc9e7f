#pragma once

#include <QString>

#include <memory>

namespace orv {

/// The platform's default voice, which reads texts aloud at its default rate. Called on the main
/// thread; nothing here waits, whatever the speech service does. Not being able to speak is no
/// error: the log says so once, and the calls do nothing.
class SpeechSynthesizer {
  public:
    virtual ~SpeechSynthesizer() = default;

    /// Makes ready what speaking needs, so that the first utterance need not wait for it.
    virtual void prepare() = 0;

    /// Ends what is being spoken at once and speaks `text`. There is no queue: of texts that come
    /// faster than the service takes them only the latest is spoken.
    virtual void speak(const QString& text) = 0;

    /// Ends what is being spoken at once, and forgets what has not begun.
    virtual void stop() = 0;
};

/// The speech of this machine. Costs nothing until it is first used.
std::unique_ptr<SpeechSynthesizer> createSystemSpeechSynthesizer();

} // namespace orv
