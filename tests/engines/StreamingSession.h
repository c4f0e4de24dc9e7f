#pragma once

#include "AssemblyAIMessages.h"
#include "DeepgramMessages.h"
#include "EngineProbe.h"
#include "LogCapture.h"
#include "ServicePeer.h"

#include <memory>

namespace orv::test {

inline const CloudEngineConfig config{.sourceLang = QStringLiteral("de"),
                                      .targetLang = QStringLiteral("en"),
                                      .apiKey = QStringLiteral("SECRET"),
                                      .region = {},
                                      .sampleRate = 48000};

inline QByteArray block(int index, qsizetype size = 960) {
    return QByteArray(size, static_cast<char>(index));
}

/// One streaming engine in front of one service in a process of its own.
template <typename Engine>
struct StreamingSession {
    explicit StreamingSession(const QString& provider,
                              const QStringList& arguments = {QStringLiteral("--key"),
                                                              QStringLiteral("SECRET")},
                              EngineTimings timings = {},
                              const QString& scheme = QStringLiteral("ws"))
        : service(QStringLiteral("streaming_service.py"), QStringList{provider} + arguments)
        , engine(std::make_unique<Engine>(
              ServiceEndpoints{{deepgramHost, service.url(scheme)},
                               {assemblyaiHost, service.url(scheme)},
                               {assemblyaiStreamingHost, service.url(scheme)}},
              timings))
        , reports(*engine) {}

    bool waitForOpen() {
        return waitUntil([this] { return service.count(QStringLiteral("open")) == 1; });
    }

    bool waitForEnd() {
        return waitUntil(
            [this] { return reports.statuses.last().startsWith(QStringLiteral("error")); });
    }

    LogCapture log;
    ServicePeer service;
    std::unique_ptr<Engine> engine;
    EngineReports reports;
};

} // namespace orv::test
