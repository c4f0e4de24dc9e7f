#pragma once

#include "FileJobs.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "SettingsFakes.h"
#include "WaitUntil.h"
#include "WhisperModelManager.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace orv::test {

/// The manager over a cache of its own, with a shell script in the interpreter's place.
class WhisperFixture : public ::testing::Test {
  protected:
    using State = WhisperModelManager::State;

    WhisperFixture() {
        EXPECT_TRUE(QDir().mkpath(cache));
        QObject::connect(manager.get(), &WhisperModelManager::changed, manager.get(),
                         [this] { ++changes; });
    }

    void place(const QString& name, const QByteArray& content = {}) const {
        QFile file(cache + u'/' + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    /// It runs in the cache, and gets "-c" and the text of a script, or the path of `script` and
    /// the model.
    void installInterpreter(const QByteArray& shellScript) const {
        QFile file(interpreter);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\ncd '" + cache.toUtf8() + "'\n" + shellScript + "\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// As if the speech server were one that has a script for downloads.
    void installScript() const {
        QFile file(script);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    bool reaches(const QString& id, State state) {
        return waitUntil([&] { return manager->state(id) == state; });
    }

    /// Waits until the manager has looked into the cache.
    void look() {
        bool looked = false;
        manager->refreshDownloadedModels();
        files.run([] { return 0; }, [&](int) { looked = true; });
        EXPECT_TRUE(waitUntil([&] { return looked; }));
    }

    bool isThere(const QString& name) const { return QFile::exists(cache + u'/' + name); }

    QByteArray contentOf(const QString& name) const {
        QFile file(cache + u'/' + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    LogCapture log;
    QTemporaryDir folder;
    const QString cache = folder.filePath(QStringLiteral("the cache/whisper"));
    const QString interpreter = folder.filePath(QStringLiteral("python3"));
    const QString script = folder.filePath(QStringLiteral("fetch_model.py"));
    AnsweredDialogs dialogs;
    SerialQueue disk{QStringLiteral("test.disk")};
    FileJobs files{disk};
    std::unique_ptr<WhisperModelManager> manager = std::make_unique<WhisperModelManager>(
        WhisperEnvironment{.programs = {.interpreter = interpreter,
                                        .script = script,
                                        .cacheFolder = cache,
                                        .pause = std::chrono::minutes(1)},
                           .files = files,
                           .dialogs = dialogs,
                           .text = bracketed});
    int changes = 0;
};

} // namespace orv::test
