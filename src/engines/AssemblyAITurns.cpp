#include "AssemblyAITurns.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Some models write what is no speech as such: "[Silence]", "[Music]".
bool isSpeech(const QString& text) {
    static const QRegularExpression onlyTags(uR"(^\s*(\[[^\]]*\][\s.]*)*$)"_s);
    return !onlyTags.match(text).hasMatch();
}

} // namespace

QStringList AssemblyAITurns::take(const AssemblyAITurn& turn) {
    QStringList lines;
    if (waiting_ && waiting_->order != turn.order) {
        letWaitingGo(lines);
    }
    if (!turn.isOver || turn.order <= lastSaid_) {
        return lines;
    }
    waiting_ = turn;
    if (turn.isFormatted || !awaitsFormatted_) {
        letWaitingGo(lines);
    }
    return lines;
}

QStringList AssemblyAITurns::finish() {
    QStringList lines;
    letWaitingGo(lines);
    return lines;
}

void AssemblyAITurns::letWaitingGo(QStringList& lines) {
    if (const auto turn = std::exchange(waiting_, {})) {
        lastSaid_ = turn->order;
        if (isSpeech(turn->text)) {
            lines.append(turn->text);
        }
    }
}

} // namespace orv
