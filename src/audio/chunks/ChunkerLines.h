#pragma once

#include <QString>

#include <cstddef>

namespace orv {

/// The log lines of sample pipeline and chunker, as functions of what they tell. Numbers are
/// written the same everywhere: decimal point, digits only. "Integer part" cuts off toward zero.
namespace chunkerLines {

// The sample pipeline.
/// Once per second of audio.
QString buffer(std::size_t total, float levelDb, float gain, bool vadEnabled);
QString veryQuiet();
QString conversionError(const QString& description);

// Chunks.
QString notConnected();
/// The oldest goes; `bound` is the most samples that are kept.
QString tooMuch(std::size_t bound);
QString tooLittle(std::size_t count);
QString tooLittleForEngine(std::size_t count);
QString dispatched(std::size_t count, double sampleRate);
QString dispatchedToEngine(std::size_t count);

// The fixed timer and the settings.
QString timerFired();
QString timerStarted();
/// `silenceDurationMs` and `thresholdDb` are shown by their integer part.
QString vadActive(double silenceDurationMs, float thresholdDb);
QString vadEnabledChanged(bool before, bool after, bool isConnected);

// Pause detection.
QString speechStarted(float levelDb, float thresholdDb);
QString silenceStarted(float levelDb);
QString pauseReached(double silenceDurationMs);
QString pauseTooSmall();
QString forced();

} // namespace chunkerLines

} // namespace orv
