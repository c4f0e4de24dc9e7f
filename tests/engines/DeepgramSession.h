#pragma once

#include "DeepgramDirectEngine.h"
#include "StreamingSession.h"

namespace orv::test {

inline QString deepgramResult(const QString& transcript, bool final = true) {
    return QStringLiteral(R"({"type":"Results","is_final":%1,"speech_final":false,"channel":)"
                          R"({"alternatives":[{"transcript":"%2","confidence":0.9}]}})")
        .arg(final ? QStringLiteral("true") : QStringLiteral("false"), transcript);
}

struct DeepgramSession : StreamingSession<DeepgramDirectEngine> {
    explicit DeepgramSession(const QStringList& arguments = {QStringLiteral("--key"),
                                                             QStringLiteral("SECRET")},
                             EngineTimings timings = {},
                             const QString& scheme = QStringLiteral("ws"))
        : StreamingSession(QStringLiteral("deepgram"), arguments, timings, scheme) {}
};

} // namespace orv::test
