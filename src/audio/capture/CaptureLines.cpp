#include "CaptureLines.h"

using namespace Qt::StringLiterals;

namespace orv::captureLines {

namespace {

QString formatText(const AudioFormat& format) {
    return rateText(format.sampleRate) + u"Hz, "_s + QString::number(format.channels) +
           (format.channels == 1 ? u" Kanal"_s : u" Kanäle"_s);
}

QString rateSwitch(const MicrophonePreparation& found) {
    switch (found.rateSwitch) {
    case RateSwitch::NotTried:
        break;
    case RateSwitch::AlreadyAt48kHz:
        return u"✅ Gerät bereits bei 48kHz"_s;
    case RateSwitch::Switched:
        return u"✅ Gerät von "_s + rateText(found.rateBefore) + u"Hz → 48kHz umgestellt"_s;
    case RateSwitch::NotSupported:
        return u"⚠️ Gerät unterstützt keine 48kHz (bleibt bei "_s +
               rateText(found.rateBefore) + u"Hz)"_s;
    case RateSwitch::RatesUnreadable:
        return u"⚠️ Sample-Raten des Geräts nicht lesbar"_s;
    }
    return {};
}

} // namespace

QString rateText(double sampleRate) {
    return QString::number(sampleRate, 'g', 10);
}

QString deviceChosen(const QString& deviceId) {
    return u"   Device ID: "_s + (deviceId.isEmpty() ? u"System-Default"_s : deviceId);
}

QStringList deviceLookup(const MicrophonePreparation& found, const QString& deviceId) {
    if (deviceId.isEmpty()) {
        return {};
    }
    if (!found.deviceFound) {
        return {u"⚠️ Mikrofon '"_s + deviceId + u"' nicht gefunden, verwende System-Default"_s};
    }
    if (!found.selectError.isEmpty()) {
        return {u"⚠️ Konnte Mikrofon nicht auf AudioUnit setzen: "_s + found.selectError};
    }
    QStringList lines = {u"✓ Mikrofon auf AudioUnit gesetzt (DeviceID: "_s + found.deviceNumber +
                         u")"_s};
    if (const QString line = rateSwitch(found); !line.isEmpty()) {
        lines.append(line);
    }
    return lines;
}

QString hardwareFormat(const QString& when, const AudioFormat& format) {
    return u"📊 Hardware-Format ("_s + when + u"): "_s + formatText(format);
}

QStringList pathAnalysis(const AudioFormat& format, bool converts) {
    const QString frame(39, u'═');
    return {
        frame,
        u"📊 AUDIO PATH ANALYSIS:"_s,
        u"   Hardware: "_s + formatText(format),
        u"   Pfad: "_s +
            (converts ? u"📦 Standard (Persistent Converter)"_s : u"🚀 LOW-LATENCY (Direct 48kHz)"_s),
        u"   Converter: "_s + (converts ? u"YES - resampling"_s : u"NO - DIRECT passthrough"_s),
        frame,
    };
}

QString converterCreated(double sampleRate) {
    return u"🔄 Persistenter Sample-Rate Converter erstellt: "_s + rateText(sampleRate) +
           u"Hz → 48kHz (Mastering-Qualität)"_s;
}

QString microphoneStarted(const AudioFormat& format) {
    return u"✅ Mikrofon-Engine gestartet ("_s + formatText(format) + u")"_s;
}

QString apps(const QString& heading, const QList<RunningApp>& apps) {
    QStringList names;
    for (const RunningApp& app : apps) {
        names.append(app.name);
    }
    return heading + u" ("_s + QString::number(apps.size()) + u"): "_s + names.join(u", "_s);
}

} // namespace orv::captureLines
