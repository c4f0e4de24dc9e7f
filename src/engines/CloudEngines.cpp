#include "CloudEngines.h"

#include "AssemblyAIDirectEngine.h"
#include "AzureDirectEngine.h"
#include "DeepgramDirectEngine.h"
#include "GoogleCloudDirectEngine.h"

#include <utility>

namespace orv {

CloudEngineFactory makeCloudEngine(ServiceEndpoints endpoints, EngineTimings timings) {
    return [endpoints = std::move(endpoints),
            timings](const QString& id) -> std::shared_ptr<CloudSTTEngine> {
        if (id == u"deepgram") {
            return std::make_shared<DeepgramDirectEngine>(endpoints, timings);
        }
        if (id == u"assemblyai") {
            return std::make_shared<AssemblyAIDirectEngine>(endpoints, timings);
        }
        if (id == u"azure") {
            return std::make_shared<AzureDirectEngine>(endpoints, timings);
        }
        if (id == u"google_rest") {
            return std::make_shared<GoogleCloudDirectEngine>(endpoints, timings);
        }
        return nullptr;
    };
}

} // namespace orv
