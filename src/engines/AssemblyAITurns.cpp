#include "AssemblyAITurns.h"

#include <utility>

namespace orv {

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
        if (!turn->text.isEmpty()) {
            lines.append(turn->text);
        }
    }
}

} // namespace orv
