#pragma once

#include "LocalSpeechEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

namespace orv::test {

/// A speech server whose interpreter is a shell script.
struct ScriptedServer {
    void place(const QByteArray& script) const {
        QFile file(environment.interpreter);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script + '\n');
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    bool has(const QString& name) const { return QFile::exists(folder.filePath(name)); }

    QTemporaryDir folder;
    LocalSpeechEnvironment environment{
        .interpreter = folder.filePath(QStringLiteral("python3")),
        .folder = folder.filePath(QStringLiteral("backend")),
        .installer = {},
        .home = folder.path(),
        .whisperCache = folder.filePath(QStringLiteral("cache/whisper")),
        .log = nullptr,
        .pause = std::chrono::minutes(1),
    };
};

} // namespace orv::test
