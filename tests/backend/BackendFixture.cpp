#include "BackendFixture.h"

#include "ProcessTable.h"
#include "UserPaths.h"
#include "WaitUntil.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

const QString prelude = uR"(
import os, signal, socket, sys, time
home = '%1'
def say(text):
    print(text, flush=True)
with open(home + '/pid.part', 'w') as file:
    file.write(str(os.getpid()))
os.rename(home + '/pid.part', home + '/pid')
)"_s;

} // namespace

namespace programs {

const QString waitForSignal = uR"(
say('ready')
while True:
    signal.pause()
)"_s;

const QString obeysOnlyInt = uR"(
signal.signal(signal.SIGTERM, signal.SIG_IGN)
signal.signal(signal.SIGINT, lambda *_: sys.exit(7))
say('ready')
while True:
    signal.pause()
)"_s;

const QString ignoresTermAndInt = uR"(
signal.signal(signal.SIGTERM, signal.SIG_IGN)
signal.signal(signal.SIGINT, signal.SIG_IGN)
say('ready')
while True:
    signal.pause()
)"_s;

} // namespace programs

BackendFixture::BackendFixture() {
    const UserPaths paths{home(), home() + u"/.config"};
    environment_.emplace(BackendEnvironment{
        .interpreter = paths.backendInterpreter(),
        .script = paths.backendScript(),
        .probe = probe,
        .dialogs = dialogs,
        .text = [](const QString& key) { return key; },
        .networkAccess = [this] { return networkAccess; },
        .mayOutlive = [this] { return mayOutlive; },
        .timings = {.modelLoading = 30ms, .portRecheck = 20ms, .liveness = 25ms, .stopPause = 60ms},
    });
}

void BackendFixture::TearDown() {
    destroyEngine();
    EXPECT_TRUE(collectChildren());
}

void BackendFixture::installBackend(const QString& source) {
    const QString& interpreter = environment_->interpreter;
    QDir().mkpath(QFileInfo(interpreter).path());
    QDir().mkpath(QFileInfo(environment_->script).path());
    QFile::link(u"/usr/bin/python3"_s, interpreter);
    QFile script(environment_->script);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly | QIODevice::Truncate));
    script.write((prelude.arg(home()) + source).toUtf8());
}

void BackendFixture::offerInstaller(const QString& source) {
    const QString path = home() + u"/install";
    QFile script(path);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write((u"#!/bin/bash\nhome='%1'\n"_s.arg(home()) + source).toUtf8());
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    environment_->installer = path;
}

TranslationEngine& BackendFixture::engine() {
    if (!engine_) {
        engine_ = std::make_unique<TranslationEngine>(*environment_);
        note(*engine_);
    }
    return *engine_;
}

void BackendFixture::note(TranslationEngine& engine) {
    QObject::connect(&engine, &TranslationEngine::BackendStatusChanged, &engine,
                     [this](bool isRunning) { posted.append(isRunning); });
}

bool BackendFixture::startAndWaitUntilReady() {
    engine().startBackend();
    return waitUntil([this] { return log.contains(u"Backend:ready"_s); });
}

pid_t BackendFixture::backendPid() const {
    return readHomeFile(u"pid"_s).toInt();
}

QString BackendFixture::readHomeFile(const QString& name) const {
    QFile file(home() + u'/' + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void BackendFixture::writeHomeFile(const QString& name, const QString& text) const {
    QFile file(home() + u'/' + name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
}

QStringList BackendFixture::linesWith(const QStringList& parts) const {
    QStringList found;
    for (const QString& line : lines()) {
        if (std::any_of(parts.begin(), parts.end(),
                        [&](const QString& part) { return line.contains(part); })) {
            found.append(line);
        }
    }
    return found;
}

void letPass(std::chrono::milliseconds time) {
    bool passed = false;
    QTimer::singleShot(time, Qt::PreciseTimer, qApp, [&] { passed = true; });
    waitUntil([&] { return passed; });
}

} // namespace orv::test
