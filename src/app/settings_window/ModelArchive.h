#pragma once

#include <QByteArrayView>
#include <QString>

namespace orv {

/// The most that `archiveIsCutShort` looks at of a file's end: a directory's end and the longest
/// comment.
inline constexpr qint64 archiveEndSize = 22 + 0xffff;

/// Whether a file, of which `head` is the beginning and `tail` the last bytes, is a ZIP archive
/// without its end.
///
/// The recognition library's models are such archives, as its framework writes them. How large each
/// has to be is known only to the server it comes from, and whether its digest is right only to the
/// library, after reading gigabytes; but an archive's directory stands at its end, so that one that
/// was broken off is known by its last bytes. What does not begin as an archive tells nothing, and
/// passes.
bool archiveIsCutShort(QByteArrayView head, QByteArrayView tail);

/// The same for a file on the disk. One that cannot be read tells nothing, either.
bool modelArchiveIsCutShort(const QString& path);

} // namespace orv
