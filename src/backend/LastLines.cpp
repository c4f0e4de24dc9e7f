#include "LastLines.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// What a terminal would show of a line in the end.
QByteArray lastState(QByteArray line) {
    while (line.endsWith('\r')) {
        line.chop(1);
    }
    return line.mid(line.lastIndexOf('\r') + 1);
}

QString forPeople(const QByteArray& bytes) {
    static const QRegularExpression commands(u"\\x1b(\\[[0-9;?]*[ -/]*[@-~]|[@-Z\\\\-_])"_s);
    static const QRegularExpression controls(u"[\\x00-\\x1f\\x7f-\\x9f]+"_s);
    QString line = QString::fromUtf8(bytes);
    line.remove(commands);
    line.replace(controls, u" "_s);
    while (!line.isEmpty() && line.back().isSpace()) {
        line.chop(1);
    }
    return line;
}

QString shortened(const QString& line) {
    if (line.size() <= LastLines::longestLine) {
        return line;
    }
    const bool endsWithinPair = line[LastLines::longestLine - 1].isHighSurrogate();
    return QString(line.left(LastLines::longestLine - (endsWithinPair ? 1 : 0)) + u'…');
}

} // namespace

void LastLines::take(QByteArrayView bytes) {
    if (bytes.size() >= kept) {
        isCut_ = isCut_ || !tail_.isEmpty() || bytes.size() > kept;
        tail_.clear();
        bytes = bytes.last(kept);
    }
    tail_.append(bytes);
    if (tail_.size() > 2 * kept) {
        isCut_ = true;
        tail_ = tail_.last(kept);
    }
}

QStringList LastLines::lines() const {
    QStringList found;
    qsizetype end = tail_.size();
    while (end >= 0 && found.size() < mostLines) {
        const qsizetype feed = end > 0 ? tail_.lastIndexOf('\n', end - 1) : -1;
        QByteArray bytes = tail_.mid(feed + 1, end - feed - 1);
        const bool lacksBeginning = feed < 0 && isCut_;
        while (lacksBeginning && !bytes.isEmpty() && continuesCharacter(bytes.front())) {
            bytes.remove(0, 1);
        }
        const QByteArray shown = lastState(bytes);
        const QString line = forPeople(shown);
        if (!line.isEmpty()) {
            const bool startsLater = lacksBeginning && shown.size() == bytes.size();
            found.prepend(shortened(startsLater ? QString(u'…' + line) : line));
        }
        end = feed;
    }
    return found;
}

QString LastLines::lastWords() const {
    const QStringList all = lines();
    const auto found = std::find_if(all.rbegin(), all.rend(), [](const QString& line) {
        return std::any_of(line.begin(), line.end(),
                           [](QChar character) { return character.isLetterOrNumber(); });
    });
    return found == all.rend() ? QString() : found->trimmed();
}

} // namespace orv
