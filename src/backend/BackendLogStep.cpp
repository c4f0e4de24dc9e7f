#include "BackendLogStep.h"

#include "BackendLogHeading.h"

#include <algorithm>

namespace orv {

namespace {

using Action = BackendLogStep::Action;

qsizetype lineFeedsBefore(QByteArrayView bytes) {
    const auto end =
        std::find_if(bytes.begin(), bytes.end(), [](char byte) { return byte != '\n'; });
    return end - bytes.begin();
}

/// Where `bytes` can be cut so that no more than `room` of them come before, and no character is in
/// two parts, as far as they are characters.
qsizetype cutBetweenCharacters(QByteArrayView bytes, qsizetype room) {
    constexpr qsizetype longestRest = 3;
    for (qsizetype cut = room; cut > 0 && cut >= room - longestRest; --cut) {
        if ((static_cast<unsigned char>(bytes[cut]) & 0xC0U) != 0x80U) {
            return cut;
        }
    }
    return room;
}

/// How many of `bytes` go where there is `room`: whole lines, or, where there is none, `mayCutLine`
/// says whether a part of one.
qsizetype fitting(QByteArrayView bytes, qint64 room, bool mayCutLine) {
    if (bytes.size() <= room) {
        return bytes.size();
    }
    const qsizetype lines = room > 0 ? bytes.first(room).lastIndexOf('\n') + 1 : 0;
    return lines == 0 && mayCutLine ? cutBetweenCharacters(bytes, room) : lines;
}

} // namespace

BackendLogStep nextStep(QByteArrayView bytes, qint64 fileSize, qint64 limit) {
    const qsizetype skipped = fileSize == 0 ? lineFeedsBefore(bytes) : 0;
    bytes = bytes.sliced(skipped);
    if (bytes.isEmpty()) {
        return {Action::Write, skipped, 0};
    }
    if (fileSize == 0 && !bytes.startsWith(backendLogMark)) {
        return {Action::Head, skipped, 0};
    }
    const qsizetype count = fitting(bytes, limit - fileSize, fileSize <= limit / 2);
    return {count > 0 ? Action::Write : Action::Rotate, skipped, count};
}

} // namespace orv
