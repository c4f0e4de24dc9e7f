#include "ChunkerLines.h"

#include "Log.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace orv::chunkerLines {

using namespace Qt::StringLiterals;

namespace {

/// `value` with a fixed number of decimals. Not printf: its decimal point follows the locale.
QString fixed(float value, int decimals) {
    std::array<char, 64> text{}; // The largest float has 39 digits before the point.
    const auto end = std::to_chars(text.data(), text.data() + text.size(),
                                   static_cast<double>(value), std::chars_format::fixed, decimals)
                         .ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

QString integerPart(double value) {
    constexpr auto limit = static_cast<double>(std::numeric_limits<qint32>::max());
    const double whole =
        std::isnan(value) ? 0 : std::trunc(std::fmin(std::fmax(value, -limit), limit));
    return QString::number(static_cast<qint64>(whole));
}

QString number(std::size_t value) {
    return QString::number(static_cast<quint64>(value));
}

} // namespace

QString buffer(std::size_t total, float levelDb, float gain, bool vadEnabled) {
    return u"🎤 Buffer: "_s + number(total) + u" samples (~"_s + number(total / 48000) + u"s) | "_s +
           fixed(levelDb, 1) + u" dB | Gain: "_s + fixed(gain, 2) + u"x | VAD="_s +
           (vadEnabled ? u"ON"_s : u"OFF"_s);
}

QString veryQuiet() {
    return u"⚠️ Audio sehr leise!"_s;
}

QString conversionError(const QString& description) {
    return u"❌ Konvertierungsfehler: "_s + description;
}

QString notConnected() {
    return u"🚫 sendAudioChunk: nicht verbunden"_s;
}

QString tooLittle(std::size_t count) {
    return u"⏳ Zu wenig Audio: "_s + number(count) + u" samples — Buffer bleibt, warte auf mehr"_s;
}

QString tooMuch(std::size_t bound) {
    return u"⚠️ Audio-Puffer voll ("_s + number(bound) +
           u" samples): das Älteste wird verworfen"_s;
}

QString tooLittleForEngine(std::size_t count) {
    return u"⏳ Direct Engine: Zu wenig Audio: "_s + number(count) + u" samples — warte"_s;
}

QString dispatched(std::size_t count, double sampleRate) {
    return u"🎵 Dispatche "_s + number(count) + u" Samples @ "_s + integerPart(sampleRate) +
           u"Hz an sendQueue (async)"_s;
}

QString dispatchedToEngine(std::size_t count) {
    return u"🎵 Direct Engine: Sende "_s + number(count) + u" Samples"_s;
}

QString timerFired() {
    return u"⏰ 3s-Timer feuert → sendAudioChunk"_s;
}

QString timerStarted() {
    return u"⏱️ Audio-Send-Timer gestartet (alle 3 Sekunden)"_s;
}

QString vadActive(double silenceDurationMs, float thresholdDb) {
    return u"⏱️ VAD Chunker aktiv (Pause: "_s + integerPart(silenceDurationMs) +
           u"ms, Threshold: "_s + integerPart(static_cast<double>(thresholdDb)) + u"dB)"_s;
}

QString vadEnabledChanged(bool before, bool after, bool isConnected) {
    return u"🎚 vadEnabled.didSet: "_s + boolText(before) + u" → "_s + boolText(after) +
           u" (isConnected="_s + boolText(isConnected) + u")"_s;
}

QString speechStarted(float levelDb, float thresholdDb) {
    return u"🗣 VAD: Sprache-Start (dB="_s + fixed(levelDb, 1) + u" > thr="_s +
           integerPart(static_cast<double>(thresholdDb)) + u")"_s;
}

QString silenceStarted(float levelDb) {
    return u"🤫 VAD: Stille-Start (dB="_s + fixed(levelDb, 1) + u")"_s;
}

QString pauseReached(double silenceDurationMs) {
    return u"✂️ VAD: Pause-Grenze erreicht ("_s + integerPart(silenceDurationMs) +
           u"ms) → Send"_s;
}

QString pauseTooSmall() {
    return u"⚠️ VAD wollte senden aber Buffer zu klein — warte weiter"_s;
}

QString forced() {
    return u"⏳ VAD: Max-Chunk (8s) erreicht → Send"_s;
}

} // namespace orv::chunkerLines
