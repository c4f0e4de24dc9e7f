#pragma once

#include "AudioCapture.h"
#include "RunningApp.h"

#include <QList>
#include <QString>
#include <QStringList>

/// The wording of what the capture sources log.
namespace orv::captureLines {

/// A rate in Hz without needless digits after the point: "44100", "22050.5".
QString rateText(double sampleRate);

QString deviceChosen(const QString& deviceId);               ///< Which device is being started.
QStringList deviceLookup(const MicrophonePreparation& found, ///< Found or not, and its 48 kHz.
                         const QString& deviceId);
QString hardwareFormat(const QString& when, const AudioFormat& format);
QStringList pathAnalysis(const AudioFormat& format, bool converts);
QString converterCreated(double sampleRate);
QString microphoneStarted(const AudioFormat& format);
QString apps(const QString& heading, const QList<RunningApp>& apps);

} // namespace orv::captureLines
