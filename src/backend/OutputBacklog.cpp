#include "OutputBacklog.h"

#include <algorithm>
#include <utility>

namespace orv {

void OutputBacklog::add(QByteArrayView bytes) {
    const qsizetype free = leftOut_ > 0 ? 0 : std::max<qsizetype>(0, room_ - waiting_.size());
    const qsizetype taken = std::min(bytes.size(), free);
    append(bytes.first(taken));
    leftOut_ += bytes.size() - taken;
}

void OutputBacklog::addLine(QByteArrayView line) {
    tellLeftOut();
    if (isWithinLine_) {
        append("\n");
    }
    append(line);
}

void OutputBacklog::drop(qsizetype count) {
    waiting_.remove(0, count);
    if (waiting_.size() <= room_ / 2) {
        tellLeftOut();
    }
    if (waiting_.isEmpty()) {
        waiting_ = {}; // Gives the memory back as well.
    }
}

void OutputBacklog::append(QByteArrayView bytes) {
    if (!bytes.isEmpty()) {
        waiting_.append(bytes);
        isWithinLine_ = bytes.back() != '\n';
    }
}

void OutputBacklog::tellLeftOut() {
    if (leftOut_ > 0) {
        const QByteArray count = QByteArray::number(std::exchange(leftOut_, 0));
        addLine(QByteArray("⚠️ Protokoll kam nicht nach - ")
                    .append(count)
                    .append(" Bytes ausgelassen\n"));
    }
}

} // namespace orv
