#pragma once

#include <QList>
#include <QString>

#include <sys/types.h>

namespace orv::test {

/// One row of the system's process table.
struct ProcessRow {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t group = 0;
    QChar state; ///< 'Z' for a process that has ended and was not waited for.
};

QList<ProcessRow> processTable();

/// True while the process runs; false once it has ended, waited for or not.
bool isAlive(pid_t pid);

/// Running members of a process group.
int aliveInGroup(pid_t group);

/// Children of this process, ended ones that were not waited for included.
int childCount();

/// Waits until all children of this process have ended, and takes them out of the process table: a
/// test leaves none to the next. False if one goes on running.
bool collectChildren();

/// Open descriptors of this process.
int descriptorCount();

} // namespace orv::test
