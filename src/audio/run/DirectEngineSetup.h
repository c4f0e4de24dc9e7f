#pragma once

#include "CloudSTTEngine.h"
#include "ConfigMessage.h"
#include "DirectEngineSession.h"
#include "EngineTimings.h"
#include "ServiceEndpoints.h"

#include <QString>

#include <memory>

namespace orv {

/// What direct engines are made from.
struct DirectEngineParts {
    const EngineCatalogue& engines;
    const ServiceEndpoints& endpoints;
    const EngineTimings& timings;
    const QString& transcriptFolder;
};

/// Makes the direct engine that the setting `sttEngine` names, saying what it does in the log. Null
/// when the run goes through the backend. The session is not connected yet.
std::unique_ptr<DirectEngineSession> setupDirectEngine(const TranslationSettings& settings,
                                                       const DirectEngineParts& parts,
                                                       const RunConfiguration& run,
                                                       DirectEngineSession::Handlers handlers);

/// What the chosen engine is connected with.
CloudEngineConfig directEngineConfig(const TranslationSettings& settings,
                                     const EngineCatalogue& engines, const RunConfiguration& run);

} // namespace orv
