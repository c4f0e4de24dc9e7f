// Puts the table of the settings, made from their list, in the place of the one in the document
// that is given: the work of scripts/settings-table.

#include "SettingsTable.h"

#include <QFile>
#include <QSaveFile>

#include <iostream>

namespace {

int fail(const QString& path, const QString& why) {
    std::cerr << QString(path + u": " + why).toStdString() << std::endl;
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: orvane_settings_table <document>" << std::endl;
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(path, file.errorString());
    }
    const QString document = orv::test::withSettingsTable(QString::fromUtf8(file.readAll()));
    if (document.isEmpty()) {
        return fail(path, QStringLiteral("no table of settings in it"));
    }
    QSaveFile written(path);
    const QByteArray bytes = document.toUtf8();
    const bool isWritten = written.open(QIODevice::WriteOnly) &&
                           written.write(bytes) == bytes.size() && written.flush() &&
                           written.commit();
    return isWritten ? 0 : fail(path, written.errorString());
}
