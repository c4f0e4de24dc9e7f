#pragma once

#include "BackendMessages.h"
#include "CloudSTTEngine.h"
#include "DirectEngineSession.h"

#include <QString>

#include <memory>

namespace orv {

class TranslationSettings;

/// Chooses the direct engine by the setting `sttEngine`, saying what it does in the log. Null when
/// the run goes through the backend. The session is not connected yet.
std::unique_ptr<DirectEngineSession> setupDirectEngine(const TranslationSettings& settings,
                                                       const CloudEngineFactory& factory,
                                                       const RunConfiguration& run,
                                                       const QString& transcriptFolder,
                                                       DirectEngineSession::Handlers handlers);

/// What the chosen engine is connected with.
CloudEngineConfig directEngineConfig(const TranslationSettings& settings,
                                     const RunConfiguration& run);

} // namespace orv
