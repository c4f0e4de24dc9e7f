#include "BackendOutput.h"

#include "BackendLog.h"
#include "Log.h"

using namespace Qt::StringLiterals;

namespace orv {

void BackendOutput::begin(const ChildCommand& command) {
    if (log_ != nullptr) {
        log_->begin(command.program + u' ' + command.arguments.join(u' '));
    }
}

void BackendOutput::take(const QByteArray& bytes) {
    if (const auto line = echo_.lineFor(bytes)) {
        logLine(*line);
    }
    lastLines_.take(bytes);
    if (log_ != nullptr) {
        log_->write(bytes);
    }
}

void BackendOutput::logLastLines() const {
    const QStringList lines = lastLines_.lines();
    if (!lines.isEmpty()) {
        logLine(u"❌ Das Backend endete beim Start, seine letzten Zeilen:\n    "_s +
                lines.join(u"\n    "_s));
    }
}

} // namespace orv
