#include "DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

DesktopEntries::DesktopEntries(QStringList folders)
    : folders_(std::move(folders)) {}

QList<DesktopEntry> DesktopEntries::list() {
    QList<DesktopEntry> entries;
    QHash<QString, File> known = std::exchange(files_, {});
    for (const QString& folder : folders_) {
        const QFileInfoList files =
            QDir(folder).entryInfoList({u"*.desktop"_s}, QDir::Files, QDir::Name);
        for (const QFileInfo& info : files) {
            const QString path = info.filePath();
            File file = known.take(path);
            if (file.changed != info.lastModified() || file.size != info.size()) {
                file = {info.lastModified(), info.size(), read(path)};
            }
            if (file.entry) {
                entries.append(*file.entry);
            }
            files_.insert(path, file);
        }
    }
    return entries;
}

std::optional<DesktopEntry> DesktopEntries::read(const QString& path) {
    ++filesRead_;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? parseDesktopEntry(file.readAll()) : std::nullopt;
}

} // namespace orv
