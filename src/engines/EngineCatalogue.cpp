#include "EngineCatalogue.h"

#include "AssemblyAIDirectEngine.h"
#include "AzureDirectEngine.h"
#include "DeepgramDirectEngine.h"
#include "GoogleCloudDirectEngine.h"
#include "GoogleStreamingEngine.h"
#include "VoskEngine.h"
#include "WhisperEngine.h"

#include <algorithm>
#include <utility>

namespace orv {

EngineCatalogue::EngineCatalogue()
    : EngineCatalogue({whisperEngine(), deepgramEngine(), assemblyaiEngine(), googleCloudEngine(),
                       googleStreamingEngine(), azureEngine(), voskEngine()}) {}

EngineCatalogue::EngineCatalogue(std::vector<EngineDescriptor> engines)
    : engines_(std::move(engines)) {
    Q_ASSERT(!engines_.empty());
}

const EngineDescriptor* EngineCatalogue::find(const QString& id) const {
    const auto found = std::ranges::find(engines_, id, &EngineDescriptor::id);
    return found == engines_.end() ? nullptr : &*found;
}

QString engineInfoText(const EngineCatalogue& catalogue, const QString& id) {
    const EngineDescriptor* engine = catalogue.find(id);
    return engine != nullptr ? engine->infoText : QString();
}

} // namespace orv
