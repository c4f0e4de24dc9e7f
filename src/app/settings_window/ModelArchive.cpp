#include "ModelArchive.h"

#include <QFile>

#include <algorithm>

namespace orv {

namespace {

constexpr QByteArrayView fileMark("PK\x03\x04", 4);
constexpr QByteArrayView endMark("PK\x05\x06", 4);
constexpr qsizetype endSize = 22;
constexpr qsizetype commentSizeAt = 20;

qsizetype byteAt(QByteArrayView bytes, qsizetype at) {
    return static_cast<unsigned char>(bytes.at(at));
}

/// Whether the directory's end stands at `at`, and its comment reaches to the end of the file.
bool endsAt(QByteArrayView tail, qsizetype at) {
    const QByteArrayView end = tail.sliced(at);
    return end.startsWith(endMark) &&
           endSize + byteAt(end, commentSizeAt) + 256 * byteAt(end, commentSizeAt + 1) ==
               end.size();
}

} // namespace

bool archiveIsCutShort(QByteArrayView head, QByteArrayView tail) {
    if (!head.startsWith(fileMark)) {
        return false;
    }
    for (qsizetype at = tail.size() - endSize; at >= 0; --at) {
        if (endsAt(tail, at)) {
            return false;
        }
    }
    return true;
}

bool modelArchiveIsCutShort(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray head = file.read(fileMark.size());
    file.seek(std::max<qint64>(0, file.size() - archiveEndSize));
    return archiveIsCutShort(head, file.read(archiveEndSize));
}

} // namespace orv
