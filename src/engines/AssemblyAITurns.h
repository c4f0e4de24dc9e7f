#pragma once

#include "AssemblyAIMessages.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// Makes one line of each turn, although some models say a finished turn twice: as it was heard,
/// and with punctuation. Each line comes once, in the order of the turns.
class AssemblyAITurns {
  public:
    /// With `awaitsFormatted` a turn that is over waits for its second form, until another turn or
    /// the end shows that it does not come.
    explicit AssemblyAITurns(bool awaitsFormatted)
        : awaitsFormatted_(awaitsFormatted) {}

    /// The lines that are certain now.
    QStringList take(const AssemblyAITurn& turn);

    /// No turn comes any more; what waits is said as it was heard.
    QStringList finish();

  private:
    void letWaitingGo(QStringList& lines);

    const bool awaitsFormatted_;
    std::optional<AssemblyAITurn> waiting_;
    int lastSaid_ = -1; ///< Order of the turn that was said last.
};

} // namespace orv
