#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orv {

/// Why a file operation failed, for people; no value means that it succeeded.
using FileProblem = std::optional<QString>;

/// Replaces the file at `path` by `content`, whole or not at all: when this returns without a
/// problem the content has reached the disk (file and folder entry are synchronised), otherwise the
/// earlier content is untouched. The file gets mode 0600, missing folders are made with mode 0700.
///
/// The content is first written to a temporary file beside `path`, named `path` + ".", sixteen
/// hexadecimal digits, ".tmp", and locked (flock) while it is being written. A process that dies
/// leaves the file but not the lock, by which `sweepTemporaryFiles` knows it.
///
/// Callable from any thread.
FileProblem replaceFile(const QString& path, const QByteArray& content);

/// Removes temporary files of `path` whose writer is no longer alive; those of another process, or
/// of another thread, that is just writing stay.
void sweepTemporaryFiles(const QString& path);

/// Moves the file at `path` to `path` + ".corrupt". An earlier file of that name is kept under the
/// first free of ".corrupt.1", ".corrupt.2" and so on.
FileProblem keepAsCorrupt(const QString& path);

/// The whole content of a regular file, or why it could not be read. A file that does not exist
/// gives neither.
struct FileContent {
    std::optional<QByteArray> content = {};
    FileProblem problem = {};
    /// With a problem: it says nothing about the file, which has to be left alone. The disk or the
    /// system refuses for the time being, or a device stands in the file's place.
    bool isFilesFault = true;
};

FileContent readFile(const QString& path);

/// Takes the rights of all others to a regular file away. Does nothing where that is not needed or
/// not possible.
void keepFromOthers(const QString& path);

/// Where the file lies once all symbolic links at `path` itself are followed, so that replacing it
/// does not replace a link that a person placed there.
QString followLinks(const QString& path);

} // namespace orv
