#include "ProcessTable.h"

#include "WaitUntil.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {

QList<ProcessRow> processTable() {
    QList<ProcessRow> rows;
    const QStringList names = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        bool isNumber = false;
        const pid_t pid = name.toInt(&isNumber);
        QFile file(u"/proc/%1/stat"_s.arg(name));
        if (!isNumber || !file.open(QIODevice::ReadOnly)) {
            continue;
        }
        // The second field is a name in parentheses that may itself hold spaces and parentheses.
        const QString text = QString::fromUtf8(file.readAll());
        const QStringList fields = text.mid(text.lastIndexOf(u')') + 2).split(u' ');
        if (fields.size() > 3) {
            rows.append({pid, fields[1].toInt(), fields[2].toInt(), fields[0].front()});
        }
    }
    return rows;
}

bool isAlive(pid_t pid) {
    const QList<ProcessRow> rows = processTable();
    return std::any_of(rows.begin(), rows.end(),
                       [&](const ProcessRow& row) { return row.pid == pid && row.state != u'Z'; });
}

int aliveInGroup(pid_t group) {
    const QList<ProcessRow> rows = processTable();
    return static_cast<int>(std::count_if(rows.begin(), rows.end(), [&](const ProcessRow& row) {
        return row.group == group && row.state != u'Z';
    }));
}

int childCount() {
    const QList<ProcessRow> rows = processTable();
    return static_cast<int>(std::count_if(
        rows.begin(), rows.end(), [](const ProcessRow& row) { return row.parent == ::getpid(); }));
}

bool collectChildren() {
    return waitUntil([] {
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        return childCount() == 0;
    });
}

int descriptorCount() {
    return static_cast<int>(QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size());
}

} // namespace orv::test
