// Whatever AssemblyAI sends must be understood or ignored. Each line is a message of one stream.

#include "AssemblyAIMessages.h"
#include "AssemblyAITurns.h"

#include <QSet>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

namespace {

void demand(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray stream(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    AssemblyAITurns waiting(true);
    AssemblyAITurns atOnce(false);
    QSet<int> over;
    qsizetype lines = 0;
    qsizetype linesAtOnce = 0;
    for (const QByteArray& message : stream.split('\n')) {
        // No message is two things.
        demand(assemblyaiTranscript(message).isEmpty() || assemblyaiSession(message).isEmpty());
        const auto turn = parseAssemblyaiTurn(message);
        const bool begins = !assemblyaiBegin(message).isEmpty();
        const bool ends = assemblyaiIsTermination(message);
        demand(int(turn.has_value()) + int(begins) + int(ends) <= 1);
        demand(!assemblyaiError(message) ||
               (!turn && !begins && !ends && assemblyaiTranscript(message).isEmpty()));
        if (turn) {
            if (turn->isOver) {
                over.insert(turn->order);
            }
            lines += waiting.take(*turn).size();
            linesAtOnce += atOnce.take(*turn).size();
        }
        // A turn is said once at most.
        demand(lines <= over.size() && linesAtOnce <= over.size());
    }
    demand(lines + waiting.finish().size() <= over.size());
    return 0;
}
