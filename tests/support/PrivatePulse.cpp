#include "PrivatePulse.h"

#include "WaitUntil.h"

#include <QFile>
#include <QUuid>

#include <gtest/gtest.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr std::size_t playedSamples = 48000 * 90;

/// Ends a program without blocking the event loop's other work for longer than that takes.
void end(QProcess& process) {
    process.kill();
    process.waitForFinished();
}

} // namespace

PrivatePulse::PrivatePulse(QStringList modules)
    : modules_(std::move(modules))
    , environment_(QProcessEnvironment::systemEnvironment()) {
    environment_.insert(u"HOME"_s, folder_.path());
    environment_.insert(u"XDG_CONFIG_HOME"_s, folder_.filePath(u"config"_s));
    environment_.insert(u"PULSE_RUNTIME_PATH"_s, folder_.path());
    environment_.insert(u"PULSE_STATE_PATH"_s, folder_.path());
    environment_.insert(u"PULSE_COOKIE"_s, folder_.filePath(u"cookie"_s));
    environment_.insert(u"DBUS_SESSION_BUS_ADDRESS"_s,
                        u"unix:path="_s + folder_.filePath(u"bus"_s));
    environment_.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, u"unix:path="_s + folder_.filePath(u"bus"_s));
    environment_.remove(u"PULSE_SERVER"_s);
    environment_.remove(u"DISPLAY"_s);
    start();
}

PrivatePulse::~PrivatePulse() {
    kill();
}

QByteArray PrivatePulse::server() const {
    return "unix:" + QFile::encodeName(folder_.filePath(u"native"_s));
}

void PrivatePulse::start() {
    QStringList arguments = {u"-n"_s,
                             u"--daemonize=no"_s,
                             u"--use-pid-file=no"_s,
                             u"--exit-idle-time=-1"_s,
                             u"--realtime=no"_s,
                             u"--high-priority=no"_s,
                             u"--log-target=file:"_s + folder_.filePath(u"log"_s)};
    // The socket comes last: who gets an answer finds everything in place.
    for (const QString& module :
         modules_ + QStringList{u"module-native-protocol-unix auth-anonymous=1 socket="_s +
                                folder_.filePath(u"native"_s)}) {
        arguments << u"-L"_s << module;
    }
    daemon_.setProcessEnvironment(environment_);
    daemon_.start(u"pulseaudio"_s, arguments);
    ASSERT_TRUE(waitUntil([this] { return answers(); })) << "the sound server does not answer";
}

void PrivatePulse::kill() {
    end(daemon_);
}

bool PrivatePulse::answers() const {
    QProcess process;
    process.setProcessEnvironment(environment_);
    process.start(u"pactl"_s, {u"-s"_s, QString::fromUtf8(server()), u"info"_s});
    return process.waitForFinished() && process.exitCode() == 0;
}

QString PrivatePulse::load(const QString& module) {
    return pactl(QStringList{u"load-module"_s} + module.split(u' '));
}

void PrivatePulse::unload(const QString& number) {
    pactl({u"unload-module"_s, number});
}

QString PrivatePulse::pactl(const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment_);
    process.start(u"pactl"_s, QStringList{u"-s"_s, QString::fromUtf8(server())} + arguments);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0)
        << qPrintable(arguments.join(u' ')) << ": " << process.readAllStandardError().constData();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

PulsePlayer::PulsePlayer(const PrivatePulse& pulse, const std::vector<qint16>& samples,
                         const QString& application, const QString& sink) {
    const QString path =
        pulse.folder() + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + u".raw";
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    for (std::size_t written = 0; written < playedSamples; written += samples.size()) {
        file.write(reinterpret_cast<const char*>(samples.data()),
                   static_cast<qint64>(samples.size() * sizeof(qint16)));
    }
    file.close();
    QStringList arguments = {u"--playback"_s,
                             u"--raw"_s,
                             u"--format=s16le"_s,
                             u"--rate=48000"_s,
                             u"--channels=1"_s,
                             u"--latency-msec=60"_s,
                             u"--client-name="_s + application,
                             u"--property=application.id="_s + application,
                             u"--server="_s + QString::fromUtf8(pulse.server())};
    if (!sink.isEmpty()) {
        arguments << u"--device="_s + sink;
    }
    process_.setProcessEnvironment(pulse.environment());
    process_.start(u"pacat"_s, arguments << path);
    EXPECT_TRUE(process_.waitForStarted());
}

PulsePlayer::~PulsePlayer() {
    end(process_);
}

} // namespace orv::test
