#include "DownloadOutput.h"

#include "WhisperModels.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// More is not looked at of a line without an end.
constexpr qsizetype longestLine = 4096;
constexpr int whole = 100;

constexpr QByteArrayView progressMark("progress ");
constexpr QByteArrayView noteMark("note ");

std::optional<int> percentIn(QByteArrayView text) {
    bool isNumber = false;
    const int percent = text.toInt(&isNumber);
    return isNumber && percent >= 0 && percent <= whole ? std::optional(percent) : std::nullopt;
}

} // namespace

QStringList DownloadOutput::take(const QByteArray& bytes) {
    QStringList notes;
    for (const char byte : bytes) {
        if (byte == '\n' || byte == '\r') {
            if (const auto note = takeLine(std::exchange(unfinished_, {}))) {
                notes.append(*note);
            }
        } else if (unfinished_.size() < longestLine) {
            unfinished_.append(byte);
        }
    }
    return notes;
}

std::optional<QString> DownloadOutput::takeLine(const QByteArray& line) {
    if (line.startsWith(progressMark)) {
        if (const auto percent = percentIn(QByteArrayView(line).sliced(progressMark.size()))) {
            percent_ = percent;
            return std::nullopt;
        }
    }
    if (line.startsWith(noteMark)) {
        return orv::lastLine(line.sliced(noteMark.size()));
    }
    if (!line.trimmed().isEmpty()) {
        lastLine_ = line;
    }
    return std::nullopt;
}

QString DownloadOutput::lastLine() const {
    const QString rest = orv::lastLine(unfinished_);
    return rest.isEmpty() ? orv::lastLine(lastLine_) : rest;
}

} // namespace orv
