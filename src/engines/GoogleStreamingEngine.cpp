#include "GoogleStreamingEngine.h"

#include "TranslationSettings.h"

using namespace Qt::StringLiterals;

namespace orv {

EngineDescriptor googleStreamingEngine() {
    return {.id = u"google_grpc"_s,
            .nameKey = u"settings.engine.google_grpc.name"_s,
            .detailKey = u"settings.engine.google_grpc.detail"_s,
            .hintKey = u"settings.engine.google_grpc.hint"_s,
            .icon = u"cloud.bolt"_s,
            .infoText = u"STT: Google gRPC Streaming (Backend) · Translation: Google Translate "
                        "(direkt) · Backend erforderlich"_s,
            .translator = u"Google Translate"_s,
            .soundGoesTo = u"Google"_s,
            .fields = {{.kind = EngineField::Kind::ServiceAccount,
                        .text = &TranslationSettings::googleServiceAccountPath,
                        .labelKey = u"settings.engine.service_account"_s,
                        .isRequired = true,
                        .message = u"engineServiceAccountPath"_s},
                       {.kind = EngineField::Kind::Text,
                        .text = &TranslationSettings::googleProjectId,
                        .labelKey = u"settings.engine.project_id"_s,
                        .placeholderKey = u"settings.engine.project_id.optional"_s,
                        .message = u"engineProjectId"_s},
                       {.kind = EngineField::Kind::Place,
                        .text = &TranslationSettings::googleLocation,
                        .labelKey = u"settings.engine.location"_s,
                        .places = googleLocations(),
                        .message = u"engineLocation"_s},
                       translationKeyField()},
            .translatesOnClient = true};
}

std::span<const ServiceRegion> googleLocations() {
    static const ServiceRegion locations[] = {
        {u"global"_s, u"Global"_s},
        {u"us-central1"_s, u"US Central (Iowa)"_s},
        {u"us-east1"_s, u"US East (South Carolina)"_s},
        {u"us-west1"_s, u"US West (Oregon)"_s},
        {u"europe-west1"_s, u"Europe West (Belgium)"_s},
        {u"europe-west4"_s, u"Europe West 4 (Netherlands)"_s},
        {u"europe-west3"_s, u"Europe West 3 (Frankfurt)"_s},
        {u"asia-southeast1"_s, u"Asia Southeast (Singapore)"_s},
        {u"asia-northeast1"_s, u"Asia Northeast (Tokyo)"_s},
        {u"asia-south1"_s, u"Asia South (Mumbai)"_s},
    };
    return locations;
}

} // namespace orv
