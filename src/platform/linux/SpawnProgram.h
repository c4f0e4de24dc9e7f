#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <vector>

namespace orv {

/// A program to be run.
struct ProgramCall {
    QString program; ///< Absolute path.
    QStringList arguments;
    QList<QByteArray> environment; ///< The whole of it, "NAME=value".

    /// Process group to run in; 0 gives the program a group of its own, so that what is typed at
    /// the program's terminal (Ctrl-C) does not reach it.
    pid_t group = 0;

    /// Become the program's descriptors 0, 1, 2 ... It inherits no other descriptor.
    std::vector<int> descriptors;
};

/// What became of a call.
struct SpawnedProgram {
    pid_t pid = -1; ///< Of a child of the calling process, which has to wait for it.
    QString error;  ///< Why there is no program; empty on success.
};

/// The environment of this program. Its bytes need not be text.
QList<QByteArray> ownEnvironment();

/// `environment` with `name` set to `value`, whether it was there before or not.
QList<QByteArray> environmentWith(QList<QByteArray> environment, const QByteArray& name,
                                  const QByteArray& value);

/// Runs a program in the current working directory, with every signal at its default: a program
/// started in the background by a script ignores SIGINT, and its children would inherit that.
/// Returns once the program is executing or has failed to.
SpawnedProgram spawnProgram(const ProgramCall& call);

} // namespace orv
