#include "PrivatePulse.h"

#include "WaitUntil.h"

#include <QFile>
#include <QUuid>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr std::size_t playedSamples = std::size_t{48000} * 90;

} // namespace

Program::Program(const QString& name, const QStringList& arguments,
                 const QProcessEnvironment& environment, const QString& output) {
    QByteArrayList texts = {name.toLocal8Bit()};
    for (const QString& argument : arguments) {
        texts.append(argument.toLocal8Bit());
    }
    QByteArrayList variables;
    for (const QString& variable : environment.toStringList()) {
        variables.append(variable.toLocal8Bit());
    }
    const auto pointers = [](QByteArrayList& list) {
        std::vector<char*> result;
        for (QByteArray& one : list) {
            result.push_back(one.data());
        }
        result.push_back(nullptr);
        return result;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, QFile::encodeName(output).constData(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    EXPECT_EQ(posix_spawnp(&process_, texts.first().constData(), &actions, nullptr,
                           pointers(texts).data(), pointers(variables).data()),
              0)
        << qPrintable(name);
    posix_spawn_file_actions_destroy(&actions);
}

Program::~Program() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        wait();
    }
}

int Program::wait() {
    int status = 0;
    if (process_ <= 0 || ::waitpid(std::exchange(process_, -1), &status, 0) < 0) {
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
                             u"--exit-idle-time=60"_s, // In case nobody is left to end it.
                             u"--realtime=no"_s,
                             u"--high-priority=no"_s,
                             u"--log-target=file:"_s + folder_.filePath(u"log"_s)};
    // The socket comes last: who gets an answer finds everything in place.
    for (const QString& module :
         modules_ + QStringList{u"module-native-protocol-unix auth-anonymous=1 socket="_s +
                                folder_.filePath(u"native"_s)}) {
        arguments << u"-L"_s << module;
    }
    daemon_ = std::make_unique<Program>(u"pulseaudio"_s, arguments, environment_);
    ASSERT_TRUE(waitUntil([this] { return answers(); })) << "the sound server does not answer";
}

void PrivatePulse::kill() {
    daemon_.reset();
}

bool PrivatePulse::answers() const {
    return Program(u"pactl"_s, {u"-s"_s, QString::fromUtf8(server()), u"info"_s}, environment_)
               .wait() == 0;
}

QString PrivatePulse::load(const QString& module) {
    return pactl(QStringList{u"load-module"_s} + module.split(u' '));
}

void PrivatePulse::unload(const QString& module) {
    pactl({u"unload-module"_s, module});
    // The daemon agrees first and removes it when its loop comes round.
    EXPECT_TRUE(waitUntil([&] { return !hasModule(module); })) << qPrintable(module);
}

bool PrivatePulse::hasModule(const QString& module) const {
    const QStringList lines =
        pactl({u"list"_s, u"short"_s, u"modules"_s}).split(u'\n', Qt::SkipEmptyParts);
    return std::any_of(lines.begin(), lines.end(), [&](const QString& line) {
        return line.split(u'\t').mid(0, 2).contains(module);
    });
}

QString PrivatePulse::pactl(const QStringList& arguments) const {
    const QString output = folder_.filePath(u"output"_s);
    Program program(u"pactl"_s, QStringList{u"-s"_s, QString::fromUtf8(server())} + arguments,
                    environment_, output);
    EXPECT_EQ(program.wait(), 0) << qPrintable(arguments.join(u' '));
    QFile file(output);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).trimmed();
}

PulsePlayer::PulsePlayer(const PrivatePulse& pulse, const std::vector<qint16>& samples,
                         const QString& application, const QString& sink,
                         std::chrono::milliseconds ahead) {
    const QString path =
        pulse.folder() + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + u".raw";
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    for (std::size_t written = 0; written < playedSamples; written += samples.size()) {
        file.write(reinterpret_cast<const char*>(samples.data()),
                   qint64(samples.size()) * qint64(sizeof(qint16)));
    }
    file.close();
    QStringList arguments = {u"--playback"_s,
                             u"--raw"_s,
                             u"--format=s16le"_s,
                             u"--rate=48000"_s,
                             u"--channels=1"_s,
                             u"--latency-msec="_s + QString::number(ahead.count()),
                             u"--client-name="_s + application,
                             u"--property=application.id="_s + application,
                             u"--server="_s + QString::fromUtf8(pulse.server())};
    if (!sink.isEmpty()) {
        arguments << u"--device="_s + sink;
    }
    process_ = std::make_unique<Program>(u"pacat"_s, arguments << path, pulse.environment());
}

PulsePlayer::~PulsePlayer() = default;

} // namespace orv::test
