#include "InstallOutput.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QString withoutMark(const QByteArray& bytes) {
    QString line = QString::fromUtf8(bytes).trimmed();
    for (const QString& mark : {u"==> "_s, u"error: "_s}) {
        if (line.startsWith(mark)) {
            line.remove(0, mark.size());
        }
    }
    return line;
}

} // namespace

QStringList InstallOutput::take(const QByteArray& bytes) {
    unfinished_ += bytes;
    QStringList lines;
    qsizetype end = 0;
    while ((end = unfinished_.indexOf('\n')) >= 0) {
        lines.append(withoutMark(unfinished_.left(end)));
        unfinished_.remove(0, end + 1);
        takeLine(lines.last());
    }
    return lines;
}

void InstallOutput::takeLine(const QString& line) {
    static const QRegularExpression stepMark(u"^\\[([0-9]+/[0-9]+)\\] "_s);
    if (const auto match = stepMark.match(line); match.hasMatch()) {
        step_ = match.captured(1);
        percent_.reset();
    }
    static const QRegularExpression percentMark(u"^([0-9]{1,3}) % "_s);
    if (const auto match = percentMark.match(line); match.hasMatch()) {
        percent_ = std::min(match.captured(1).toInt(), 100);
    }
    if (!line.isEmpty()) {
        lastLine_ = line;
    }
}

QString InstallOutput::lastLine() const {
    const QString rest = withoutMark(unfinished_);
    return rest.isEmpty() ? lastLine_ : rest;
}

} // namespace orv
