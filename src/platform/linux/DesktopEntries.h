#pragma once

#include "DesktopEntry.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// The desktop entries of this machine. Each file is read when it is new or has changed. Reads the
/// disk; on one thread at a time.
class DesktopEntries {
  public:
    /// `folders` hold the ".desktop" files.
    explicit DesktopEntries(QStringList folders);

    /// All of them, in the order of the folders and within each of the files' names.
    QList<DesktopEntry> list();

    /// How many files have been read so far.
    int filesRead() const { return filesRead_; }

  private:
    struct File {
        QDateTime changed;
        qint64 size = 0;
        std::optional<DesktopEntry> entry;
    };

    std::optional<DesktopEntry> read(const QString& path);

    const QStringList folders_;
    QHash<QString, File> files_; ///< By path, as of the last listing.
    int filesRead_ = 0;
};

} // namespace orv
